#pragma once

#include <cstdint>

namespace Sensor {

/// Bytes of memory that the program occupies; 0 when the machine doesn't report it.
std::uint64_t ResidentMemory();

/// To be called before the first thread starts. By default the C library gives each thread a heap of its own, and
/// memory that one thread allocates and another one frees makes each of them grow for a long time.
void LimitHeaps();

} // namespace Sensor
