#include "Sensor/Scan/ThinnedPoints.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

/// Points at x = 0, 1, ...
std::vector<Point> PointsOf(const std::vector<double>& heights) {
    std::vector<Point> points;
    for (const double z : heights) {
        points.push_back({static_cast<double>(points.size()), z});
    }
    return points;
}

/// "x:z x:z ..." of whole numbers.
std::string Thinned(const std::vector<double>& heights, std::size_t limit) {
    std::string text;
    for (const Point& point : ThinnedPoints(PointsOf(heights), limit)) {
        text += (text.empty() ? "" : " ") + std::to_string(static_cast<int>(point.x)) + ':' +
                std::to_string(static_cast<int>(point.z));
    }
    return text;
}

TEST(ThinnedPoints, FewPointsStayAsTheyAre) {
    EXPECT_EQ(Thinned({3, 1, 2}, 3), "0:3 1:1 2:2");
    EXPECT_EQ(Thinned({3, 1, 2}, 1000), "0:3 1:1 2:2");
    EXPECT_EQ(Thinned({}, 5), "");
}

TEST(ThinnedPoints, EachStretchKeepsItsLowestAndItsHighestPointInTheirOrder) {
    EXPECT_EQ(Thinned({0, 5, -1, 0, 1, 2, 9, 8}, 4), "1:5 2:-1 4:1 6:9");
    EXPECT_EQ(Thinned({0, 5, -1, 0, 1, 2, 9, 8}, 5), "1:5 2:-1 4:1 6:9") << "at most";
    EXPECT_EQ(Thinned({0, 5, -1, 0, 1, 2, 9, 8}, 2), "2:-1 6:9");
    EXPECT_EQ(Thinned({7, 7, 7, 7, 7}, 4), "0:7 1:7 2:7 4:7");
}

TEST(ThinnedPoints, NoLimitBelowTwoLeavesAny) {
    EXPECT_EQ(Thinned({1, 2, 3}, 0), "");
    EXPECT_EQ(Thinned({1, 2, 3}, 1), "");
    EXPECT_EQ(Thinned({1}, 1), "");
}

TEST(ThinnedPoints, NoPeakIsLostAndTheLimitHolds) {
    for (std::size_t size = 1; size < 200; ++size) {
        std::vector<double> heights(size);
        heights[size * 7 / 11] = 100;
        heights[size / 3] = -100;
        for (const std::size_t limit : {2, 3, 10, 64, 199}) {
            const auto thinned = ThinnedPoints(PointsOf(heights), limit);
            ASSERT_LE(thinned.size(), std::max<std::size_t>(limit, 2)) << size;
            ASSERT_TRUE(std::ranges::is_sorted(thinned, {}, &Point::x)) << size;
            const auto [lowest, highest] = std::ranges::minmax(heights);
            ASSERT_EQ(std::ranges::min(thinned, {}, &Point::z).z, lowest) << size << ' ' << limit;
            ASSERT_EQ(std::ranges::max(thinned, {}, &Point::z).z, highest) << size << ' ' << limit;
        }
    }
}

} // namespace
} // namespace Sensor::Scan
