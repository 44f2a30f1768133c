#include "Sensor/ServiceHost.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/VorCnLib.h"

#include <utility>

namespace Sensor {

namespace {

constexpr const char* ControlPluginType = "VorControl.ControlPlugin";

bool Offers(const VorPlugin::PluginLib& library, const std::string& typeName) {
    for (const auto& plugin : library.PluginsByType(ControlPluginType)) {
        const auto* control = static_cast<const VorControl::ControlPlugin*>(plugin->GetObject());
        for (std::size_t index = 0; index < control->ControlInfoCount(); ++index) {
            if (control->ControlInfoAt(index).TypeName() == typeName) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

ServiceHost::Assembly::Assembly() {
    Vor::ThrowIfFailed(VorCnLib_Construct(&handle));
}

ServiceHost::Assembly::~Assembly() {
    xyAssembly_VRelease(handle);
}

ServiceHost::ServiceHost(Settings settings)
    : persistence(PersistEnviron(std::move(settings))) {}

ServiceHost::~ServiceHost() {
    StopServices();
}

VorCommon::PersistManager::Environ ServiceHost::PersistEnviron(Settings settings) {
    return {.dataFolder = settings.dataFolder.string(),
            .job = std::move(settings.job),
            .setMainLoopBlocked =
                [this](bool blocked) {
                    if (blocked) {
                        mainLoopBlock.emplace(runtimeCache);
                    } else {
                        mainLoopBlock.reset();
                    }
                },
            .decorateStore = std::move(settings.decorateStore)};
}

VorControl::ControlModuleEnviron ServiceHost::ModuleEnviron() {
    VorControl::ControlModuleEnviron environ;
    environ.platformAttributes = &attributes;
    environ.runtimeCache = &runtimeCache;
    environ.persistRegistrar = &persistence;
    environ.problemsManager = &problems;
    environ.resultHub = &hub;
    environ.updateGate = &updateGate;
    environ.livePreStartScanEvent = &preStartScan;
    environ.livePostStopScanEvent = &postStopScan;
    environ.factoryRestoreEvent = &factoryRestore;
    environ.persistManager = &persistence;
    return environ;
}

void ServiceHost::LoadPlugins(const std::filesystem::path& folder) {
    plugins.LoadFolder(folder);
}

void ServiceHost::CreateServices() {
    while (module == nullptr) {
        try {
            module = std::make_unique<VorControl::ControlModule>(plugins, ModuleEnviron());
        } catch (const VorControl::ControlCreateException& e) {
            const VorPlugin::PluginLib* library = FindLibrary(e.TypeName());
            if (library == nullptr) {
                throw;
            }
            Vor::LogUser(Vor::UserError, "VorControl", "%1$s is left out: its service %2$s can't be created (%3$s).",
                         library->Path(), e.TypeName(), e.what());
            plugins.Unload(*library);
        }
    }
}

const VorPlugin::PluginLib* ServiceHost::FindLibrary(const std::string& typeName) const {
    for (std::size_t index = 0; index < plugins.Count(); ++index) {
        if (Offers(plugins.At(index), typeName)) {
            return &plugins.At(index);
        }
    }
    return nullptr;
}

void ServiceHost::BeforeScan() {
    Raise(preStartScan);
}

void ServiceHost::AfterScan() {
    Raise(postStopScan);
}

void ServiceHost::Raise(Vor::Event<>& event) {
    try {
        event.Raise();
    } catch (const std::exception& e) {
        Vor::LogError("A service failed at the start or the end of the scan.");
        Vor::Exception::LogException(e);
        Vor::Exception::LogBackTrace(e);
    } catch (...) {
        Vor::LogError("A service failed at the start or the end of the scan with something that is no exception.");
    }
}

void ServiceHost::StopServices() {
    if (module == nullptr) {
        return;
    }
    for (const std::string& id : Services().List()) {
        try {
            VorControl::IControlInstance& instance = Services().GetInstance(id);
            if (instance.IsEnabled()) {
                instance.Enable(false);
            }
        } catch (const std::exception& e) {
            Vor::LogError("Service %s can't be stopped.", id);
            Vor::Exception::LogException(e);
        } catch (...) {
            Vor::LogError("Service %s can't be stopped, for something that is no exception.", id);
        }
    }
}

} // namespace Sensor
