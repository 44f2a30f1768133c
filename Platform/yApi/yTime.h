#pragma once

#include <chrono>
#include <cstdint>

/// The monotonic clock in nanoseconds, never 0. Two times of one process can be compared.
inline std::uint64_t yTime_Monotonic() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}
