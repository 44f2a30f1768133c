#pragma once

#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlMetrics.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/ControlScanResults.h"
#include "VorControl/Protocol/ControlDir.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace VorApi {
class ResourceRouter;
}

namespace VorControl {

/// The control subsystem. The application constructs and destroys it on the main loop's thread, or while the loop is
/// stopped, and never destroys it on a thread that the main loop waits for. When the constructor returns, all services
/// exist and none is started: they start when the persistence manager initialises or loads the job domain.
class ControlModule {
public:
    /// The resources of the subsystem are routes of `router`, which outlives the module, as long as the module lives.
    /// Throws ControlCreateException if a service can't be created. Then nothing of the subsystem is left.
    ControlModule(VorPlugin::PluginManager& plugins, VorApi::ResourceRouter& router,
                  const ControlModuleEnviron& environ);

    IControlManager& Manager() { return manager; }
    /// What the application's own clients run the sensor's operations with, under an id that no service has.
    ControlProtocolOperations& Operations() { return manager.Operations(); }
    /// See ControlManager.
    const std::vector<ServiceLoadNotes>& NotesOfLastLoad() const { return manager.NotesOfLastLoad(); }
    /// Result sets of each started service, by its id, that wait for it.
    std::map<std::string, std::size_t> QueuedResults() const { return scanResults.QueuedCounts(); }

private:
    ControlRegistry registry;
    ControlScanResults scanResults;
    ControlManager manager;
    ControlMetrics metrics;
    ControlDir directory;
};

} // namespace VorControl
