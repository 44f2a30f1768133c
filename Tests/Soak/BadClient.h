#pragma once

#include <atomic>
#include <cstdint>

namespace Soak {

enum class Manner { HalfRequests, Resets, Silence, Floods, Garbage };

/// A client that misbehaves in one manner until `ending` is set. Each client has its own thread.
void Misbehave(Manner manner, std::uint16_t port, const std::atomic<bool>& ending);

} // namespace Soak
