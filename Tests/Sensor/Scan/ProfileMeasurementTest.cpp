#include "Sensor/Scan/ProfileMeasurement.h"

#include "Sensor/Scan/Limits.h"

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

TEST(ProfileMeasurement, MeasuresHeightWidthAndCount) {
    const auto measured = ProfileMeasurement::Of({{3, 1}, {-2, 4}, {10, -5}, {1, 2}});
    EXPECT_EQ(measured.max, 4.0);
    EXPECT_EQ(measured.min, -5.0);
    EXPECT_EQ(measured.mean, 0.5);
    ASSERT_TRUE(measured.width);
    EXPECT_EQ(*measured.width, 5.0);
    EXPECT_EQ(measured.count, 4U);
}

TEST(ProfileMeasurement, HasNoWidthWithoutAPointAboveZero) {
    const auto measured = ProfileMeasurement::Of({{0, -1}, {5, 0}});
    EXPECT_FALSE(measured.width);
    EXPECT_EQ(measured.max, 0.0);
}

TEST(ProfileMeasurement, OnePointAboveZeroIsZeroWide) {
    const auto measured = ProfileMeasurement::Of({{-7, 3}});
    ASSERT_TRUE(measured.width);
    EXPECT_EQ(*measured.width, 0.0);
    EXPECT_EQ(measured.mean, 3.0);
}

TEST(Limits, BothEndsAreInside) {
    const Limits limits{1, 2};
    EXPECT_EQ(limits.Decide(0.999), 0);
    EXPECT_EQ(limits.Decide(1), 1);
    EXPECT_EQ(limits.Decide(2), 1);
    EXPECT_EQ(limits.Decide(2.001), 0);
}

TEST(Limits, WithoutLimitsEveryValueIsGood) {
    EXPECT_EQ(Limits().Decide(1e300), 1);
    EXPECT_EQ(Limits().Decide(-1e300), 1);
}

} // namespace
} // namespace Sensor::Scan
