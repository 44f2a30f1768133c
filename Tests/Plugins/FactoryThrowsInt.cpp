#include "FixtureService.h"

void Fixture::AddTypes(VorControl::ControlPlugin& plugin) {
    AddType(plugin, "factoryThrowsInt",
            [](const auto&) -> std::shared_ptr<VorControl::ControlProtocol::IProtocol> { throw 3; });
}
