#pragma once

namespace Soak {

/// Runs the sensor inside this process at 1,000 frames a second, for at least two minutes. Ten Modbus clients work at
/// the same time: five send random commands and read, five misbehave (half requests, resets, silence, floods, garbage).
/// So do eight clients of HTTP: three read documents, two edit parameters and the map with If-Match, three listen to
/// events. Jobs are loaded at random, and the services are disabled and enabled again. Prints the results, such as the
/// longest stall of the main loop, and returns 1 when
///  - an accepted command didn't end, or ended with a wrong status,
///  - a reply mixed two scans, or a request got no reply,
///  - an answer of HTTP is unexpected, or a stream without a beat for ten seconds,
///  - fewer than 100 edits were made over HTTP,
///  - fewer than 100 commands were accepted,
///  - the median of resident or of allocated memory in the last minute is more than 256 KB above that of the second
///    minute,
///  - at the end a command isn't done within five seconds,
/// else 0.
int ControlSoak(int minutes);

} // namespace Soak
