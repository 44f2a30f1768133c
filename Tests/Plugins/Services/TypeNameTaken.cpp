#include "FixtureService.h"

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddService(plugin, "startThrowsException", {});
    Fixture::AddService(plugin, "typeNameFree", {});
}
