#pragma once

#include "Services/Common/TcpCounters.h"

#include <atomic>
#include <cstdint>

namespace Services::Ascii {

/// What a server counts: written by its network thread, read by any.
struct ServerCounters : Common::TcpCounters {
    std::atomic<std::uint64_t> requests = 0; ///< lines, each of which was answered
    std::atomic<std::uint64_t> errors = 0;   ///< those that were answered with ERROR

    void Reset() {
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &errors}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }
};

} // namespace Services::Ascii
