#pragma once

#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/ControlScanResults.h"

namespace VorControl {

/// The control subsystem. The application builds and destroys it on the main loop's thread, or with the loop stopped;
/// it never destroys it on a thread that the main loop waits for. On return of the constructor all services exist, and
/// none is started: that is done when the persistence manager initialises or loads the job domain.
class ControlModule {
public:
    /// A service that can't be created fails the whole with ControlCreateException, and leaves nothing behind.
    ControlModule(VorPlugin::PluginManager& plugins, const ControlModuleEnviron& environ);

    IControlManager& Manager() { return manager; }

private:
    ControlRegistry registry;
    ControlScanResults scanResults;
    ControlManager manager;
};

} // namespace VorControl
