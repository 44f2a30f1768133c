#include "Sensor/Jobs/OfflineServices.h"

#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/ServiceModule.h"
#include "Vor/Exception.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/Control/VorCnLib.h"
#include "yApi/yStatus.h"

#include <algorithm>

namespace Sensor::Jobs {

OfflineServices::OfflineServices(VorPlugin::PluginManager& plugins) {
    Vor::ThrowIfFailed(VorCnLib_Construct(&assembly));
    try {
        module = MakeServiceModule(plugins, router, ModuleEnviron());
    } catch (...) {
        xyAssembly_VRelease(assembly);
        throw;
    }
}

OfflineServices::~OfflineServices() {
    module.reset();
    xyAssembly_VRelease(assembly);
}

VorControl::ControlModuleEnviron OfflineServices::ModuleEnviron() {
    VorControl::ControlModuleEnviron environ;
    environ.platformAttributes = &attributes;
    environ.runtimeCache = &runtimeCache;
    environ.problemsManager = &problems;
    environ.updateGate = &updateGate;
    environ.resultHub = &hub;
    environ.requestProcessor = &requests;
    return environ;
}

VorControl::IControlInstance& OfflineServices::Get(const std::string& serviceId) {
    VorControl::IControlManager& services = module->Manager();
    const std::vector<std::string> known = services.List();
    if (std::find(known.begin(), known.end(), serviceId) == known.end()) {
        Vor::Throw(yERROR_PARAMETER, "there is no service '%s'. Expected one of: %s.", serviceId, Listed(known));
    }
    return services.GetInstance(serviceId);
}

} // namespace Sensor::Jobs
