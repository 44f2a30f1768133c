#pragma once

namespace Soak {

/// Runs the program at 1,000 frames a second while one Modbus client reads all measurements of the demo map up to once
/// a millisecond. Resident memory is read every five seconds. Returns 1 when the last reading is 30 MB or more, or when
/// the median of the last minute is more than 256 KB above that of the sixth minute (in a run of up to six minutes: the
/// first minute), else 0. Throws when the sensor doesn't answer.
int MemorySoak(int minutes);

} // namespace Soak
