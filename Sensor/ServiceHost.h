#pragma once

#include "VorCommon/PersistManager.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlModule.h"
#include "VorPlugin/PluginManager.h"
#include "yApi/yAssembly.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Sensor {

class VirtualSensor;

/// What the services live in: the objects of the platform, the plug-ins and the control module. For the main loop's
/// thread.
class ServiceHost {
public:
    struct Settings {
        std::filesystem::path dataFolder;
        std::string job;
        VorCommon::PersistManager::StoreDecorator decorateStore = nullptr;
        /// As PersistManager::Environ::jobLoaded.
        std::function<void(const std::string& fileName)> jobLoaded = nullptr;
    };

    /// The sensor is borrowed. Throws a Vor::Exception.
    ServiceHost(Settings settings, VirtualSensor& sensor);
    /// Stops every service.
    ~ServiceHost();
    ServiceHost(const ServiceHost&) = delete;
    ServiceHost& operator=(const ServiceHost&) = delete;

    /// Opens the plug-ins of a folder; those that are refused are told by Plugins(). Throws a Vor::Exception when the
    /// folder can't be read.
    void LoadPlugins(const std::filesystem::path& folder);
    VorPlugin::PluginManager& Plugins() { return plugins; }

    /// A sentence for each service type of a plug-in whose name an earlier one has taken.
    std::vector<std::string> DuplicateTypeNames() const;

    /// Creates the services, none of which is started. A plug-in whose service can't be created is named in the log and
    /// left out. Throws a Vor::Exception.
    void CreateServices();
    /// Once the services are created.
    VorControl::IControlManager& Services() { return module->Manager(); }
    VorCommon::PersistManager& Persistence() { return persistence; }

    /// Loads the workspace and the job, which starts the enabled services. Throws a Vor::Exception when a file can't be
    /// read.
    void LoadDomains();
    /// Why a service, by id, failed to start in LoadDomains; it isn't here when it didn't.
    const std::map<std::string, std::string>& StartFailures() const { return startFailures; }

    void StopServices();

private:
    /// The assembly of the control library, as long as it lives.
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
    const VorPlugin::PluginLib* FindLibrary(const std::string& typeName) const;

    VirtualSensor& sensor;
    VorCommon::PlatformAttributes attributes{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::UpdateGate updateGate;
    VorCommon::ProblemsManager problems;
    Assembly assembly;
    VorPlugin::PluginManager plugins;
    VorCommon::PersistManager persistence;
    std::unique_ptr<VorControl::ControlModule> module;
    std::map<std::string, std::string> startFailures;
};

} // namespace Sensor
