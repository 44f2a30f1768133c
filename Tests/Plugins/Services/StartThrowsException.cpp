#include "FixtureService.h"

#include <stdexcept>

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    Fixture::AddService(plugin, "startThrowsException", [] { throw std::runtime_error("the cable is cut"); });
}
