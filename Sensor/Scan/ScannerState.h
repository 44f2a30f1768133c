#pragma once

#include <cstdint>

namespace Sensor::Scan {

/// The state of a scan, or of the last one while no scan runs.
struct ScannerState {
    bool scanning = false;
    std::uint64_t frames = 0; ///< published
    std::int64_t encoder = 0; ///< at the last frame; 0 before the first
    std::uint64_t time = 0;   ///< microseconds from the start of the scan to now or to its end; 0 before the first scan
};

} // namespace Sensor::Scan
