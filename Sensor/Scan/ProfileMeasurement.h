#pragma once

#include "Sensor/Scan/Recording.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace Sensor::Scan {

/// The measurements of one profile, in millimetres.
struct ProfileMeasurement {
    double max;                  ///< of z
    double min;                  ///< of z
    double mean;                 ///< the arithmetic mean of z
    std::optional<double> width; ///< greatest minus least x of the points with z above 0, if there are any
    std::size_t count;           ///< of points

    /// `points` has at least one element.
    static ProfileMeasurement Of(const std::vector<Point>& points);
};

} // namespace Sensor::Scan
