#pragma once

#include <cstdint>

namespace VorControl::ControlProtocol {

/// What a service does at the moment. A service counts as running in Running, Starting and FailedToStop.
enum class ProtocolStatus : std::int32_t {
    Running = 0,
    Stopped = 1,
    Starting = 2,
    Stopping = 3,
    FailedToStart = 4,
    FailedToStop = 5
};

} // namespace VorControl::ControlProtocol
