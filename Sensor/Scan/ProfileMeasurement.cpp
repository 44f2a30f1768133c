#include "Sensor/Scan/ProfileMeasurement.h"

#include <algorithm>

namespace Sensor::Scan {

ProfileMeasurement ProfileMeasurement::Of(const std::vector<Point>& points) {
    ProfileMeasurement result{points.front().z, points.front().z, 0, std::nullopt, points.size()};
    double sum = 0;
    double left = 0;
    double right = 0;
    bool above = false;
    for (const Point& point : points) {
        result.max = std::max(result.max, point.z);
        result.min = std::min(result.min, point.z);
        sum += point.z;
        if (point.z > 0) {
            left = above ? std::min(left, point.x) : point.x;
            right = above ? std::max(right, point.x) : point.x;
            above = true;
        }
    }
    result.mean = sum / static_cast<double>(points.size());
    if (above) {
        result.width = right - left;
    }
    return result;
}

} // namespace Sensor::Scan
