#include "FixtureService.h"

void Fixture::AddTypes(VorControl::ControlPlugin& plugin) {
    AddService(plugin, "startThrowsException", {});
    AddService(plugin, "typeNameFree", {});
}
