#pragma once

#include "Net/TcpCounters.h"
#include "yApi/yTime.h"

#include <atomic>
#include <cstdint>

namespace Services::Common {

/// Counts of a service since it was started. Written by its network thread, read by any thread.
struct ServiceCounters : Net::TcpCounters {
    std::atomic<std::uint64_t> requests = 0; ///< requests that were answered
    std::atomic<std::uint64_t> failed = 0;   ///< requests that were answered with an error
    std::atomic<std::uint64_t> startTime = yTime_Monotonic();

    void Reset() {
        startTime.store(yTime_Monotonic(), std::memory_order_relaxed);
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &failed}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }

    /// Seconds since the service was started.
    std::uint64_t Uptime() const {
        constexpr std::uint64_t Second = 1'000'000'000;
        return (yTime_Monotonic() - startTime.load(std::memory_order_relaxed)) / Second;
    }
};

} // namespace Services::Common
