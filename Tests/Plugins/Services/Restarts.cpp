#include "FixtureService.h"
#include "VorControl/Control/IControlHost.h"

namespace {

/// Requests a restart of the sensor when it starts.
class RestartingService : public Fixture::Service {
public:
    using Service::Service;

    void Start() override {
        Service::Start();
        GetControlHost().Restart(Id());
    }
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "restarts", [](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
        return std::make_shared<RestartingService>(environ, [] {});
    });
}
