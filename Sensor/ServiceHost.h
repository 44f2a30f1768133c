#pragma once

#include "Sensor/SensorTools.h"
#include "VorApi/Event.h"
#include "VorApi/ResourceRouter.h"
#include "VorCommon/PersistManager.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlModule.h"
#include "VorPlugin/PluginManager.h"
#include "VorRest/RequestProcessor.h"
#include "yApi/yAssembly.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Sensor {

class VirtualSensor;

/// Owns the services, with the plug-ins, the control module and the objects of the platform that they need. For the
/// main loop's thread.
class ServiceHost {
public:
    struct Settings {
        std::filesystem::path dataFolder;
        std::string job;
        VorCommon::PersistManager::StoreDecorator decorateStore = nullptr;
    };

    /// `sensor` must outlive this. Throws a Vor::Exception.
    ServiceHost(Settings settings, VirtualSensor& sensor);
    /// Stops every service.
    ~ServiceHost();
    ServiceHost(const ServiceHost&) = delete;
    ServiceHost& operator=(const ServiceHost&) = delete;

    /// Loads the plug-ins of a folder. Plugins().Refusals() lists those that can't be loaded. Throws a Vor::Exception
    /// when the folder can't be read.
    void LoadPlugins(const std::filesystem::path& folder);
    VorPlugin::PluginManager& Plugins() { return plugins; }

    /// A sentence for each service type that is left out because an earlier plug-in has a type of the same name.
    std::vector<std::string> DuplicateTypeNames() const;

    /// Creates the services without starting them. A plug-in whose service can't be created is unloaded, and logged for
    /// the user. Throws a Vor::Exception.
    void CreateServices();
    /// After CreateServices.
    VorControl::IControlManager& Services() { return module->Manager(); }
    /// After CreateServices.
    VorControl::ControlModule& Module() { return *module; }
    VorCommon::PersistManager& Persistence() { return persistence; }
    VorCommon::ProblemsManager& Problems() { return problems; }
    /// The tools of the sensor, whose limits are loaded and saved with the job.
    SensorTools& Tools() { return tools; }
    /// Raised on the main loop with the file name of a job that is the loaded one from then on, whoever has loaded it;
    /// not by LoadDomains.
    Vor::Event<const std::string&>& JobLoadedEvent() { return jobLoadedEvent; }
    /// The resources of the services are its routes from CreateServices on.
    VorApi::ResourceRouter& Router() { return router; }
    VorRest::RequestProcessor& Requests() { return requests; }

    /// Loads the workspace and the job, which starts the enabled services. Throws a Vor::Exception when a file can't be
    /// read.
    void LoadDomains() { persistence.Load(); }

    void StopServices();

private:
    /// A reference to the assembly of the control library.
    class Assembly {
    public:
        Assembly();
        ~Assembly();
        Assembly(const Assembly&) = delete;
        Assembly& operator=(const Assembly&) = delete;

    private:
        yAssembly handle = nullptr;
    };

    VorCommon::PersistManager::Environ PersistEnviron(Settings settings);
    VorControl::ControlModuleEnviron ModuleEnviron();

    VirtualSensor& sensor;
    VorCommon::PlatformAttributes attributes{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::UpdateGate updateGate;
    VorCommon::ProblemsManager problems;
    Assembly assembly;
    VorPlugin::PluginManager plugins;
    Vor::Event<const std::string&> jobLoadedEvent;
    VorCommon::PersistManager persistence;
    SensorTools tools;
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    std::unique_ptr<VorControl::ControlModule> module;
};

} // namespace Sensor
