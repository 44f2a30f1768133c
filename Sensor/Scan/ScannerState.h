#pragma once

#include <cstdint>

namespace Sensor::Scan {

/// What a scanner tells of its scan, or of the last one while it stands still.
struct ScannerState {
    bool scanning = false;
    std::int64_t encoder = 0; ///< of the last frame; 0 before the first
    std::uint64_t time = 0;   ///< microseconds since the scan started, which stop with it; 0 before the first scan
};

} // namespace Sensor::Scan
