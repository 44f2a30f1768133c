#include "FixtureService.h"

void Fixture::AddTypes(VorControl::ControlPlugin& plugin) {
    AddType(plugin, "factoryGivesNothing", [](const auto&) { return nullptr; });
}
