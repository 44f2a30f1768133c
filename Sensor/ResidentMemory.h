#pragma once

#include <cstdint>

namespace Sensor {

/// Bytes of memory that the program occupies; 0 when the machine doesn't report it.
std::uint64_t ResidentMemory();

} // namespace Sensor
