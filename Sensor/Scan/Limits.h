#pragma once

#include <limits>

namespace Sensor::Scan {

/// The range of accepted values, including both ends. By default every value is accepted.
struct Limits {
    double least = -std::numeric_limits<double>::infinity();
    double greatest = std::numeric_limits<double>::infinity();

    /// 1 inside, 0 outside.
    unsigned char Decide(double value) const { return value >= least && value <= greatest ? 1 : 0; }
};

} // namespace Sensor::Scan
