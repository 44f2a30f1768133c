#pragma once

#include <atomic>
#include <cstdint>

namespace Services::Common {

/// What a server counts of its connections: written by its network thread, read by any.
struct TcpCounters {
    std::atomic<std::uint64_t> connected = 0; ///< connections that are open now
    std::atomic<std::uint64_t> refused = 0;   ///< connections that were closed as soon as they were made
};

} // namespace Services::Common
