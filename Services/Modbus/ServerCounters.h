#pragma once

#include "Services/Common/TcpCounters.h"

#include <atomic>
#include <cstdint>

namespace Services::Modbus {

/// What a server counts: written by its network thread, read by any.
struct ServerCounters : Common::TcpCounters {
    std::atomic<std::uint64_t> requests = 0;   ///< whole requests, each of which was answered
    std::atomic<std::uint64_t> exceptions = 0; ///< those that were answered with an exception

    void Reset() {
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &exceptions}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }
};

} // namespace Services::Modbus
