#pragma once

#include "Net/TcpCounters.h"

#include <atomic>
#include <cstdint>

namespace Services::Common {

/// Counts of a service since it was started. Written by its network thread, read by any thread.
struct ServiceCounters : Net::TcpCounters {
    std::atomic<std::uint64_t> requests = 0; ///< requests that were answered
    std::atomic<std::uint64_t> failed = 0;   ///< requests that were answered with an error

    void Reset() {
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &failed}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }
};

} // namespace Services::Common
