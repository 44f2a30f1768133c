#include "FixtureService.h"

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddType(plugin, "factoryGivesNothing", [](const auto&) { return nullptr; });
}
