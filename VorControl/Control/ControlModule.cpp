#include "VorControl/Control/ControlModule.h"

namespace VorControl {

ControlModule::ControlModule(VorPlugin::PluginManager& plugins, VorApi::ResourceRouter& router,
                             const ControlModuleEnviron& environ)
    : registry(plugins)
    , scanResults(environ.resultHub, environ.pipeAllocator)
    , manager(registry, scanResults, environ)
    , metrics(manager)
    , directory(router, manager, metrics) {}

} // namespace VorControl
