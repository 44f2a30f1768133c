#pragma once

#include "Services/Common/TcpCounters.h"

#include <atomic>
#include <cstdint>

namespace Services::Ascii {

/// Counts of a server. Written by its network thread, read by any thread.
struct ServerCounters : Common::TcpCounters {
    std::atomic<std::uint64_t> requests = 0; ///< lines that were answered
    std::atomic<std::uint64_t> errors = 0;   ///< lines that were answered with ERROR

    void Reset() {
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &errors}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }
};

} // namespace Services::Ascii
