#include "Sensor/Resources/SensorProperties.h"

#include "Sensor/Resources/DocumentMembers.h"
#include "Sensor/ServiceState.h"
#include "Sensor/VirtualSensor.h"
#include "VorApi/Path.h"
#include "VorCommon/PersistManager.h"
#include "VorCommon/ProblemsManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"

#include <exception>

namespace Sensor::Resources {

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
    RegisterReadOnly(*this, "job", job, "Loaded job");
    RegisterReadOnly(*this, "jobModified", jobModified, "Whether the job has changes that aren't saved");
    RegisterReadOnly(*this, "services", services, "Services");
    Register("problems", problems, "Problems");
}

void SensorProperties::Populate(const SensorEnviron& environ, std::chrono::seconds time) {
    name = "vorsensor";
    version = VOR_VERSION;
    boot = environ.boot;
    upTime = static_cast<unsigned long long>(time.count());
    runState = environ.sensor.Core().GetRunState() == 1 ? "scanning" : "ready";
    frame = environ.sensor.ScanState().frames;
    triggerMode = environ.sensor.TriggerMode() == Scan::TriggerMode::Software ? "software" : "time";
    job = environ.persistence.LoadedJob();
    jobModified = environ.persistence.IsModified(VorCommon::PersistDomain::Job);

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
