#include "Sensor/Resources/SensorProperties.h"

#include "Sensor/ResidentMemory.h"
#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/ServiceState.h"
#include "Sensor/VirtualSensor.h"
#include "VorApi/Path.h"
#include "VorCommon/PersistManager.h"
#include "VorCommon/ProblemsManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"

#include <exception>
#include <filesystem>

namespace Sensor::Resources {

namespace {

const char* TextOf(VorScan::AlignState state) {
    switch (state) {
    case VorScan::AlignState::Aligned:
        return "aligned";
    case VorScan::AlignState::Aligning:
        return "aligning";
    default:
        return "notAligned";
    }
}

std::vector<std::string> UnsavedOf(const VorCommon::PersistManager& persistence) {
    std::vector<std::string> names;
    if (persistence.IsModified(VorCommon::PersistDomain::Job)) {
        names.emplace_back("job");
    }
    if (persistence.IsModified(VorCommon::PersistDomain::Workspace)) {
        names.emplace_back("workspace");
    }
    return names;
}

} // namespace

ServiceProperties::ServiceProperties() {
    RegisterReadOnly(*this, "id", id, "Id");
    RegisterReadOnly(*this, "displayName", displayName, "Name");
    RegisterReadOnly(*this, "enabled", enabled, "Enabled");
    RegisterReadOnly(*this, "status", status, "Status");
    RegisterReadOnly(*this, "address", address, "Address");
    RegisterReadOnly(*this, "failure", failure, "Failure");
    RegisterReadOnly(*this, "path", path, "Path");
}

// A service whose state can't be read keeps nobody from reading the others.
void ServiceProperties::Populate(VorControl::IControlInstance& instance) {
    id = instance.Id();
    displayName = instance.DisplayName();
    enabled = instance.IsEnabled();
    path = VorApi::Path::Format("/controls/:protocol", {instance.Id()});
    ServiceState state;
    try {
        state = ServiceState::Of(instance);
    } catch (const std::exception& e) {
        state = {.status = "Unknown", .address = "", .failure = e.what()};
    }
    status = state.status;
    address = state.address;
    failure = state.failure;
}

ProblemCounts::ProblemCounts() {
    RegisterReadOnly(*this, "failures", failures, "Failures");
    RegisterReadOnly(*this, "warnings", warnings, "Warnings");
}

SensorProperties::SensorProperties() {
    RegisterReadOnly(*this, "name", name, "Name");
    RegisterReadOnly(*this, "version", version, "Version");
    RegisterReadOnly(*this, "boot", boot, "Id of this run of the program");
    RegisterReadOnly(*this, "upTime", upTime, "Time since the start");
    upTime.EnableUnits(true);
    upTime.SetUnits("s");
    RegisterReadOnly(*this, "runState", runState, "Run state, ready or scanning");
    RegisterReadOnly(*this, "frame", frame, "Frames of the present or last scan");
    RegisterReadOnly(*this, "triggerMode", triggerMode, "What makes a frame, time or software");
    RegisterReadOnly(*this, "alignment", alignment, "Alignment, notAligned, aligning or aligned");
    RegisterReadOnly(*this, "encoder", encoder, "Encoder at the last frame");
    RegisterReadOnly(*this, "laser", laser, "Whether the laser is on");
    RegisterReadOnly(*this, "memory", memory, "Memory that the program occupies");
    memory.EnableUnits(true);
    memory.SetUnits("B");
    RegisterReadOnly(*this, "dataFolder", dataFolder, "Data folder");
    RegisterReadOnly(*this, "job", job, "Loaded job");
    RegisterReadOnly(*this, "jobModified", jobModified, "Whether the job has changes that aren't saved");
    RegisterReadOnly(*this, "unsaved", unsaved, "What has changes that aren't saved, job or workspace");
    RegisterReadOnly(*this, "services", services, "Services");
    Register("problems", problems, "Problems");
}

void SensorProperties::Populate(const SensorEnviron& environ, std::chrono::seconds time) {
    name = "vorsensor";
    version = VOR_VERSION;
    boot = environ.boot;
    upTime = static_cast<unsigned long long>(time.count());
    runState = environ.sensor.Core().GetRunState() == 1 ? "scanning" : "ready";
    const Scan::ScannerState scan = environ.sensor.ScanState();
    frame = scan.frames;
    encoder = scan.encoder;
    laser = scan.scanning;
    alignment = TextOf(environ.sensor.Alignment());
    memory = ResidentMemory();
    triggerMode = environ.sensor.TriggerMode() == Scan::TriggerMode::Software ? "software" : "time";
    dataFolder =
        std::filesystem::path(environ.persistence.FilePath(VorCommon::PersistDomain::Workspace)).parent_path().string();
    job = environ.persistence.LoadedJob();
    jobModified = environ.persistence.IsModified(VorCommon::PersistDomain::Job);
    unsaved = UnsavedOf(environ.persistence);

    const std::vector<std::string> ids = environ.services.List();
    services.Resize(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        services.At(i).Populate(environ.services.GetInstance(ids[i]));
    }

    unsigned long long warnings = 0;
    const auto listed = environ.problems.List();
    for (const VorCommon::ProblemsManager::Problem& problem : listed) {
        warnings += problem.severity == 0 ? 1 : 0;
    }
    problems.warnings = warnings;
    problems.failures = listed.size() - warnings;
}

} // namespace Sensor::Resources
