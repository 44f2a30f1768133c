#include "FixtureService.h"
#include "VorControl/Control/IControlHost.h"

namespace {

/// Requests a factory restore when it starts.
class RestoringService : public Fixture::Service {
public:
    using Service::Service;

    void Start() override {
        Service::Start();
        GetControlHost().FactoryRestore(Id());
    }
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "restoresFactory", [](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
        return std::make_shared<RestoringService>(environ, [] {});
    });
}
