#pragma once

#include "Services/Common/TcpCounters.h"

#include <atomic>
#include <cstdint>

namespace Services::Modbus {

/// Counts of a server. Written by its network thread, read by any thread.
struct ServerCounters : Common::TcpCounters {
    std::atomic<std::uint64_t> requests = 0;   ///< requests that were answered
    std::atomic<std::uint64_t> exceptions = 0; ///< requests that were answered with an exception

    void Reset() {
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &exceptions}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }
};

} // namespace Services::Modbus
