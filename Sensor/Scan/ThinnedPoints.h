#pragma once

#include "Sensor/Scan/Recording.h"

#include <cstddef>
#include <vector>

namespace Sensor::Scan {

/// At most `limit` points of a profile, in its order: of each of `limit` / 2 stretches of about equally many points,
/// the lowest one and the highest one, so that no peak is lost. All points when there are no more than that; none for a
/// limit below 2.
std::vector<Point> ThinnedPoints(const std::vector<Point>& points, std::size_t limit);

} // namespace Sensor::Scan
