#include "FixtureService.h"

#include <stdexcept>

void Fixture::AddTypes(VorControl::ControlPlugin& plugin) {
    AddType(plugin, "factoryThrows", [](const auto&) -> std::shared_ptr<VorControl::ControlProtocol::IProtocol> {
        throw std::runtime_error("no licence");
    });
}
