#pragma once

#include "Sensor/Scan/Recording.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace Sensor::Scan {

/// What the tools measure of one profile, in millimetres.
struct ProfileMeasurement {
    /// Of z.
    double max;
    double min;
    /// The arithmetic mean of z.
    double mean;
    /// Greatest minus least x of the points with z above 0; none without such a point.
    std::optional<double> width;
    std::size_t count;

    /// `points` holds at least one.
    static ProfileMeasurement Of(const std::vector<Point>& points);
};

} // namespace Sensor::Scan
