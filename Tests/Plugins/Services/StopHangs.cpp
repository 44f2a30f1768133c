#include "FixtureService.h"

#include <unistd.h>

namespace {

class HangingService : public Fixture::Service {
public:
    using Service::Service;

    /// Also called before the first start, when a load resets the service.
    void Stop() override {
        while (GetProtocolStatus() == VorControl::ControlProtocol::ProtocolStatus::Running) {
            pause();
        }
    }
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "stopHangs", [](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
        return std::make_shared<HangingService>(environ, [] {});
    });
}
