#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

/// For waits: the duration, limited to a century so that it can be added to a clock's time without overflow.
inline std::chrono::microseconds yThread_Duration(std::uint64_t microseconds) {
    constexpr std::uint64_t Century = 3'155'760'000'000'000;
    return std::chrono::microseconds(static_cast<std::int64_t>(std::min(microseconds, Century)));
}
