#include "FixtureService.h"

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddService(plugin, "startThrowsInt", [] { throw 42; });
}
