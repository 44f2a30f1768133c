#include "FixtureService.h"

#include <stdexcept>

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "factoryThrows",
                     [](const auto&) -> std::shared_ptr<VorControl::ControlProtocol::IProtocol> {
                         throw std::runtime_error("no licence");
                     });
}
