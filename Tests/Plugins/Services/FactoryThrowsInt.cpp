#include "FixtureService.h"

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "factoryThrowsInt",
                     [](const auto&) -> std::shared_ptr<VorControl::ControlProtocol::IProtocol> { throw 3; });
}
