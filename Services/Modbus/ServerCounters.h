#pragma once

#include <atomic>
#include <cstdint>

namespace Services::Modbus {

// What a server counts: written by its network thread, read by any.
struct ServerCounters {
    std::atomic<std::uint64_t> connected = 0;  // connections that are open now
    std::atomic<std::uint64_t> refused = 0;    // connections that were closed as soon as they were made
    std::atomic<std::uint64_t> requests = 0;   // whole requests, each of which was answered
    std::atomic<std::uint64_t> exceptions = 0; // those that were answered with an exception

    void Reset() {
        for (std::atomic<std::uint64_t>* counter : {&connected, &refused, &requests, &exceptions}) {
            counter->store(0, std::memory_order_relaxed);
        }
    }
};

} // namespace Services::Modbus
