#include "Sensor/Scan/PartGenerator.h"

#include "Sensor/Scan/ProfileMeasurement.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

TEST(PartGenerator, MakesTheSamePartEachTime) {
    const Recording first = GeneratePart();
    const Recording second = GeneratePart();
    ASSERT_EQ(first.frames.size(), second.frames.size());
    for (std::size_t frame = 0; frame < first.frames.size(); ++frame) {
        ASSERT_EQ(first.frames[frame].points.size(), second.frames[frame].points.size());
        for (std::size_t point = 0; point < first.frames[frame].points.size(); ++point) {
            ASSERT_EQ(first.frames[frame].points[point].x, second.frames[frame].points[point].x);
            ASSERT_EQ(first.frames[frame].points[point].z, second.frames[frame].points[point].z);
        }
    }
}

TEST(PartGenerator, HasKnownFirstPoints) {
    const Recording part = GeneratePart();
    const auto& points = part.frames.front().points;
    EXPECT_EQ(points[0].x, -20.0);
    EXPECT_EQ(points[0].z, -1.493);
    EXPECT_EQ(points[1].x, -19.75);
    EXPECT_EQ(points[1].z, -1.508);
}

TEST(PartGenerator, HasAStepARidgeAndNoise) {
    const Recording part = GeneratePart();
    ASSERT_EQ(part.frames.size(), 120U);
    for (const Frame& frame : part.frames) {
        const auto measured = ProfileMeasurement::Of(frame.points);
        EXPECT_NEAR(measured.max, 10.0, 0.2);
        EXPECT_NEAR(measured.min, -1.5, 0.021);
        ASSERT_TRUE(measured.width);
        EXPECT_EQ(*measured.width, 26.0);
        EXPECT_EQ(measured.count, 161U);
        for (const Point& point : frame.points) {
            if (point.x > -13 && point.x < -5) {
                EXPECT_NEAR(point.z, 5.0, 0.021);
            }
        }
    }
    EXPECT_NE(part.frames[0].points[40].z, part.frames[1].points[40].z);
}

} // namespace
} // namespace Sensor::Scan
