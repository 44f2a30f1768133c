#include "FixtureService.h"

#include <stdexcept>

namespace {

/// Fails to start in the way that a service should.
class FailingService : public Fixture::Service {
public:
    explicit FailingService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : Service(environ, {}) {}

    void Start() override {
        UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Starting);
        try {
            throw std::runtime_error("the port is taken");
        } catch (const std::exception& e) {
            UpdateStatusAndRethrow(e, VorControl::ControlProtocol::ProtocolStatus::FailedToStart);
        }
    }
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "startFails", [](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
        return std::make_shared<FailingService>(environ);
    });
}
