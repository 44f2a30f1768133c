#pragma once

#include <chrono>
#include <string>

namespace Sensor {

/// A time as "2026-01-31T23:59:59.999Z", UTC (RFC 3339).
std::string UtcText(std::chrono::system_clock::time_point time);

} // namespace Sensor
