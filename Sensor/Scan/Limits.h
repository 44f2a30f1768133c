#pragma once

#include <limits>

namespace Sensor::Scan {

/// The range in which a measurement is good, both ends included. Without an end given, everything is.
struct Limits {
    double least = -std::numeric_limits<double>::infinity();
    double greatest = std::numeric_limits<double>::infinity();

    /// 1 inside, 0 outside.
    unsigned char Decide(double value) const { return value >= least && value <= greatest ? 1 : 0; }
};

} // namespace Sensor::Scan
