#pragma once

#include "Net/TcpCounters.h"
#include "Services/Common/ResultLatency.h"
#include "yApi/yTime.h"

#include <atomic>
#include <cstdint>

namespace Services::Common {

/// What a service has done since it was started, at one moment.
struct ServiceFigures {
    std::uint64_t dropped = 0; ///< result sets, and lines for single clients, that were lost on their way
    std::uint64_t connected = 0;
    std::uint64_t refused = 0;
    std::uint64_t requests = 0;
    std::uint64_t failed = 0;
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
    std::uint64_t resultsReceived = 0; ///< always the sum of the next two
    std::uint64_t resultsApplied = 0;
    std::uint64_t resultsDropped = 0;
    ResultLatency::Figures latency = {};
};

/// Counts of a service since it was started. Those of clients are written by its network thread, those of results by
/// the thread of its results, all are read by any thread.
struct ServiceCounters : Net::TcpCounters {
    std::atomic<std::uint64_t> requests = 0;       ///< requests that were answered
    std::atomic<std::uint64_t> failed = 0;         ///< requests that were answered with an error
    std::atomic<std::uint64_t> resultsApplied = 0; ///< result sets that clients could read, or were sent
    std::atomic<std::uint64_t> resultsDropped = 0; ///< result sets that were lost on their way to the clients
    std::atomic<std::uint64_t> linesDropped = 0;   ///< what was lost on its way to a single client
    std::atomic<std::uint64_t> startTime = yTime_Monotonic();
    ResultLatency latency; ///< of the result sets that clients could read

    void Reset() {
        startTime.store(yTime_Monotonic(), std::memory_order_relaxed);
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &bytesIn, &bytesOut, &requests, &failed,
                                                    &resultsApplied, &resultsDropped, &linesDropped}) {
            counter->store(0, std::memory_order_relaxed);
        }
        latency.Reset();
    }

    std::uint64_t Dropped() const {
        return resultsDropped.load(std::memory_order_relaxed) + linesDropped.load(std::memory_order_relaxed);
    }

    ServiceFigures Figures() const {
        const auto read = [](const std::atomic<std::uint64_t>& counter) {
            return counter.load(std::memory_order_relaxed);
        };
        const std::uint64_t applied = read(resultsApplied);
        const std::uint64_t lost = read(resultsDropped);
        return {.dropped = lost + read(linesDropped),
                .connected = read(connected),
                .refused = read(refused),
                .requests = read(requests),
                .failed = read(failed),
                .bytesIn = read(bytesIn),
                .bytesOut = read(bytesOut),
                .resultsReceived = applied + lost,
                .resultsApplied = applied,
                .resultsDropped = lost,
                .latency = latency.Read(yTime_Monotonic())};
    }

    /// Seconds since the service was started.
    std::uint64_t Uptime() const {
        constexpr std::uint64_t Second = 1'000'000'000;
        return (yTime_Monotonic() - startTime.load(std::memory_order_relaxed)) / Second;
    }
};

} // namespace Services::Common
