#pragma once

namespace Soak {

/// Runs the sensor inside this process at 1,000 frames a second. Ten Modbus clients work at the same time: five send
/// random commands and read, five misbehave (half requests, resets, silence, floods). Jobs are loaded at random, and
/// the services are disabled and enabled again. 1, after telling what, when
///  - a command that was taken didn't end, or ended with another status than it must,
///  - a reply mixed two scans, or a request got no reply,
///  - the last minute's median of resident memory lies more than 1 MB above that of the second minute,
///  - at the end a command isn't taken and done within five seconds,
/// else 0. Prints the longest stall of the main loop. At least two minutes.
int ControlSoak(int minutes);

} // namespace Soak
