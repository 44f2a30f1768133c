#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace Sensor::Io {

/// How a port is switched. All but those for software events switch by themselves.
enum class PortBehaviour : std::int32_t {
    Unused = 0,         ///< always in its idle state
    Scanning = 1,       ///< on while the sensor scans
    Frames = 2,         ///< a pulse with each frame
    SoftwareEvents = 3, ///< as it is asked for
};

/// What a request to turn the output on does.
enum class PortMode {
    Level, ///< it stays on until it is turned off
    Pulse  ///< it is on for a time
};

/// What the target of a request means.
enum class PortSchedule {
    Now,     ///< nothing
    Encoder, ///< the encoder of the scan at which the output changes
    Time     ///< the microseconds since the start of the scan at which it changes
};

/// The state of an output while nobody drives its device.
enum class PortIdle { Off, On, Keep };

struct PortSettings {
    std::string name = {};
    PortBehaviour behaviour = PortBehaviour::SoftwareEvents;
    bool activeLow = false; ///< the line is low while the output is on
    PortMode mode = PortMode::Level;
    std::chrono::microseconds pulseWidth{10'000};
    std::chrono::microseconds delay{0}; ///< from the target of a request to the change
    PortSchedule schedule = PortSchedule::Now;
    PortIdle idle = PortIdle::Off;

    bool operator==(const PortSettings&) const = default;
};

} // namespace Sensor::Io
