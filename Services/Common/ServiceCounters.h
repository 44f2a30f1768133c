#pragma once

#include "Net/TcpCounters.h"
#include "yApi/yTime.h"

#include <atomic>
#include <cstdint>

namespace Services::Common {

/// Counts of a service since it was started. Those of clients are written by its network thread, those of results by
/// the thread of its results, all are read by any thread.
struct ServiceCounters : Net::TcpCounters {
    std::atomic<std::uint64_t> requests = 0;        ///< requests that were answered
    std::atomic<std::uint64_t> failed = 0;          ///< requests that were answered with an error
    std::atomic<std::uint64_t> resultsReceived = 0; ///< result sets that came from the sensor
    std::atomic<std::uint64_t> resultsApplied = 0;  ///< result sets that clients could read, or were sent
    std::atomic<std::uint64_t> dropped = 0;         ///< results that were lost on their way to the clients
    std::atomic<std::uint64_t> startTime = yTime_Monotonic();

    void Reset() {
        startTime.store(yTime_Monotonic(), std::memory_order_relaxed);
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &bytesIn, &bytesOut, &requests, &failed,
                                                    &resultsReceived, &resultsApplied, &dropped}) {
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
