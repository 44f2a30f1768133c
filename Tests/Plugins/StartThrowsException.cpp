#include "FixtureService.h"

#include <stdexcept>

void Fixture::AddTypes(VorControl::ControlPlugin& plugin) {
    AddService(plugin, "startThrowsException", [] { throw std::runtime_error("the cable is cut"); });
}
