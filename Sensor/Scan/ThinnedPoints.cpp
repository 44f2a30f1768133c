#include "Sensor/Scan/ThinnedPoints.h"

#include <algorithm>

namespace Sensor::Scan {

std::vector<Point> ThinnedPoints(const std::vector<Point>& points, std::size_t limit) {
    if (limit < 2) {
        return {};
    }
    if (points.size() <= limit) {
        return points;
    }
    std::vector<Point> thinned;
    thinned.reserve(limit);
    const std::size_t stretches = limit / 2;
    const auto place = [&](std::size_t stretch) {
        return points.begin() + static_cast<std::ptrdiff_t>(points.size() * stretch / stretches);
    };
    for (std::size_t stretch = 0; stretch < stretches; ++stretch) {
        const auto [lowest, highest] = std::minmax_element(place(stretch), place(stretch + 1),
                                                           [](const Point& a, const Point& b) { return a.z < b.z; });
        thinned.push_back(*std::min(lowest, highest));
        if (lowest != highest) {
            thinned.push_back(*std::max(lowest, highest));
        }
    }
    return thinned;
}

} // namespace Sensor::Scan
