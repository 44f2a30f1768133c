#include "VorControl/Control/ControlModule.h"

namespace VorControl {

ControlModule::ControlModule(VorPlugin::PluginManager& plugins, const ControlModuleEnviron& environ)
    : registry(plugins)
    , scanResults(environ.resultHub, environ.pipeAllocator)
    , manager(registry, scanResults, environ) {}

} // namespace VorControl
