#pragma once

#include <atomic>
#include <cstdint>

namespace Net {

/// Counts of a server's clients. Written by its network thread, read by any thread.
struct TcpCounters {
    std::atomic<std::uint64_t> connected = 0; ///< connections that are open now
    std::atomic<std::uint64_t> refused = 0;   ///< connections that were closed at once
    std::atomic<std::uint64_t> bytesIn = 0;   ///< received from clients
    std::atomic<std::uint64_t> bytesOut = 0;  ///< sent to clients
};

} // namespace Net
