#pragma once

#include <ostream>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Remote {

/// Prints what a sensor does, for people: of the documents "/sensor" and "/sensor/problems". What they lack is left
/// empty.
void PrintStatus(std::ostream& out, const nlohmann::json& sensor, const nlohmann::json& problems);

} // namespace Sensor::Remote
