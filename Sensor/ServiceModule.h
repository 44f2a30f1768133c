#pragma once

#include "VorControl/Control/ControlModule.h"

#include <memory>
#include <string>
#include <vector>

namespace VorApi {
class ResourceRouter;
}

namespace VorPlugin {
class PluginLib;
class PluginManager;
} // namespace VorPlugin

namespace Sensor {

/// The types of service that a plug-in brings.
std::vector<std::string> ServiceTypes(const VorPlugin::PluginLib& library);

/// Creates the services of the plug-ins, and their resources, without starting them. A plug-in whose service can't be
/// created is unloaded, and logged for the user. Throws a Vor::Exception.
std::unique_ptr<VorControl::ControlModule> MakeServiceModule(VorPlugin::PluginManager& plugins,
                                                             VorApi::ResourceRouter& router,
                                                             const VorControl::ControlModuleEnviron& environ);

} // namespace Sensor
