#include "FixtureService.h"

void Fixture::AddTypes(VorControl::ControlPlugin& plugin) {
    AddService(plugin, "startThrowsInt", [] { throw 42; });
}
