#pragma once

#include "VorApi/ResourceRouter.h"
#include "VorCommon/PlatformAttributes.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/RuntimeCache.h"
#include "VorCommon/UpdateGate.h"
#include "VorControl/Control/ControlModule.h"
#include "VorCore/ResultHub.h"
#include "VorRest/RequestProcessor.h"
#include "yApi/yAssembly.h"

#include <memory>
#include <string>

namespace VorPlugin {
class PluginManager;
}

namespace Sensor::Jobs {

/// The services of the plug-ins without a sensor: they aren't started, get no scan results, and aren't saved or loaded
/// by a persistence manager. For the main loop's thread.
class OfflineServices {
public:
    /// `plugins` must outlive this. As MakeServiceModule.
    explicit OfflineServices(VorPlugin::PluginManager& plugins);
    ~OfflineServices();
    OfflineServices(const OfflineServices&) = delete;
    OfflineServices& operator=(const OfflineServices&) = delete;

    /// Throws a Vor::Exception that lists the known services when the service is unknown.
    VorControl::IControlInstance& Get(const std::string& serviceId);

private:
    VorControl::ControlModuleEnviron ModuleEnviron();

    VorCommon::PlatformAttributes attributes{VorCommon::PlatformKind::VirtualSensor};
    VorCommon::RuntimeCache runtimeCache;
    VorCommon::UpdateGate updateGate;
    VorCommon::ProblemsManager problems;
    VorCore::ResultHub hub;
    VorApi::ResourceRouter router;
    VorRest::RequestProcessor requests{router};
    yAssembly assembly = nullptr;
    std::unique_ptr<VorControl::ControlModule> module;
};

} // namespace Sensor::Jobs
