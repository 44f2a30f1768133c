#include "Sensor/ServiceHost.h"

#include "Sensor/ServiceModule.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/Exception.h"
#include "Vor/Format.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/VorCnLib.h"

#include <map>
#include <utility>

namespace Sensor {

ServiceHost::Assembly::Assembly() {
    Vor::ThrowIfFailed(VorCnLib_Construct(&handle));
}

ServiceHost::Assembly::~Assembly() {
    xyAssembly_VRelease(handle);
}

ServiceHost::ServiceHost(Settings settings, VirtualSensor& sensor)
    : sensor(sensor)
    , persistence(PersistEnviron(std::move(settings)))
    , tools(
          sensor.Input(), [&sensor](std::vector<Scan::Limits> limits) { sensor.SetLimits(std::move(limits)); },
          persistence) {}

ServiceHost::~ServiceHost() {
    StopServices();
}

VorCommon::PersistManager::Environ ServiceHost::PersistEnviron(Settings settings) {
    return {.dataFolder = settings.dataFolder.string(),
            .job = std::move(settings.job),
            .runtimeCache = &runtimeCache,
            .decorateStore = std::move(settings.decorateStore),
            .jobLoaded = [this](const std::string& fileName) { jobLoadedEvent.RaiseToAll(fileName); }};
}

VorControl::ControlModuleEnviron ServiceHost::ModuleEnviron() {
    VorControl::ControlModuleEnviron environ;
    environ.platformAttributes = &attributes;
    environ.runtimeCache = &runtimeCache;
    environ.persistRegistrar = &persistence;
    environ.problemsManager = &problems;
    environ.resultHub = &sensor.Hub();
    environ.updateGate = &updateGate;
    environ.scanEngineManager = &sensor.ScanEngines();
    environ.livePreStartScanEvent = &sensor.PreStartScanEvent();
    environ.livePostStopScanEvent = &sensor.PostStopScanEvent();
    environ.factoryRestoreEvent = &sensor.FactoryRestoreEvent();
    environ.persistManager = &persistence;
    environ.pipeManager = &sensor.Pipe();
    environ.core = &sensor.Core();
    environ.requestProcessor = &requests;
    return environ;
}

void ServiceHost::LoadPlugins(const std::filesystem::path& folder) {
    plugins.LoadFolder(folder);
}

std::vector<std::string> ServiceHost::DuplicateTypeNames() const {
    std::vector<std::string> sentences;
    std::map<std::string, std::string> owners;
    for (std::size_t index = 0; index < plugins.Count(); ++index) {
        const std::string& path = plugins.At(index).Path();
        for (const std::string& name : ServiceTypes(plugins.At(index))) {
            const auto [owner, added] = owners.emplace(name, path);
            if (!added) {
                sentences.push_back(Vor::Format("Service %s of %s is left out: the type name is taken by %s", name,
                                                path, owner->second));
            }
        }
    }
    return sentences;
}

void ServiceHost::CreateServices() {
    module = MakeServiceModule(plugins, router, ModuleEnviron());
}

void ServiceHost::StopServices() {
    if (module == nullptr) {
        return;
    }
    for (const std::string& serviceId : Services().List()) {
        VorControl::IControlInstance& instance = Services().GetInstance(serviceId);
        if (instance.IsEnabled()) {
            instance.Enable(false);
        }
    }
}

} // namespace Sensor
