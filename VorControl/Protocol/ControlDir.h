#pragma once

#include <memory>

namespace VorApi {
class ResourceRouter;
}

namespace VorControl {

class ControlDirImpl;
class IControlManager;
class IControlMetrics;

/// The resources of the services, which are routes of the router as long as this lives. All of it belongs to the main
/// loop. The services that exist at its construction are those whose changes are notified.
class ControlDir {
public:
    /// Fails with yERROR_ALREADY_EXISTS when the router has one of the routes. Then it has none of the others.
    ControlDir(VorApi::ResourceRouter& router, IControlManager& manager, IControlMetrics& metrics);
    ~ControlDir();

    ControlDir(const ControlDir&) = delete;
    ControlDir& operator=(const ControlDir&) = delete;

private:
    std::unique_ptr<ControlDirImpl> impl;
};

} // namespace VorControl
