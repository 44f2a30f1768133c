#include "VorMsg/VvMeasureMsg.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

struct Converted {
    std::int32_t result;
    int notANumber;
    int outOfRange;

    bool operator==(const Converted&) const = default;
};

Converted Convert(double value, double scale = 1000.0) {
    Converted converted{-1, -1, -1};
    converted.result = VvMeasureMsg_Convert64fTo32s(value, scale, converted.notANumber, converted.outOfRange);
    return converted;
}

} // namespace

TEST(VvMeasureMsgConvert, ReturnsThousandths) {
    EXPECT_EQ(Convert(1.5), (Converted{1500, 0, 0}));
    EXPECT_EQ(Convert(-0.001), (Converted{-1, 0, 0}));
    EXPECT_EQ(Convert(0), (Converted{0, 0, 0}));
    EXPECT_EQ(Convert(2, 10), (Converted{20, 0, 0}));
    EXPECT_EQ(Convert(0.1 + 0.2), (Converted{300, 0, 0}));
}

TEST(VvMeasureMsgConvert, RoundsToTheNearestWithTiesAwayFromZero) {
    EXPECT_EQ(Convert(0.0004), (Converted{0, 0, 0}));
    EXPECT_EQ(Convert(0.5, 1), (Converted{1, 0, 0}));
    EXPECT_EQ(Convert(-0.5, 1), (Converted{-1, 0, 0}));
    EXPECT_EQ(Convert(2.5, 1), (Converted{3, 0, 0}));
    EXPECT_EQ(Convert(-2.5, 1), (Converted{-3, 0, 0}));
    EXPECT_EQ(Convert(2.4999, 1), (Converted{2, 0, 0}));
}

TEST(VvMeasureMsgConvert, ReachesBothEndsOfTheRange) {
    EXPECT_EQ(Convert(2147483.647), (Converted{2147483647, 0, 0}));
    EXPECT_EQ(Convert(-2147483.648), (Converted{std::numeric_limits<std::int32_t>::min(), 0, 0}));
    EXPECT_EQ(Convert(2147483647.4, 1), (Converted{2147483647, 0, 0}));
}

TEST(VvMeasureMsgConvert, FlagsWhatIsOutOfRange) {
    EXPECT_EQ(Convert(2147483.648), (Converted{0, 0, 1}));
    EXPECT_EQ(Convert(-2147483.649), (Converted{0, 0, 1}));
    EXPECT_EQ(Convert(2147483647.5, 1), (Converted{0, 0, 1}));
    EXPECT_EQ(Convert(1e300), (Converted{0, 0, 1}));
    EXPECT_EQ(Convert(std::numeric_limits<double>::max()), (Converted{0, 0, 1}));
    EXPECT_EQ(Convert(-std::numeric_limits<double>::max()), (Converted{0, 0, 1}));
}

TEST(VvMeasureMsgConvert, FlagsWhatIsNoNumber) {
    EXPECT_EQ(Convert(std::nan("")), (Converted{0, 1, 0}));
    EXPECT_EQ(Convert(std::numeric_limits<double>::infinity()), (Converted{0, 1, 0}));
    EXPECT_EQ(Convert(-std::numeric_limits<double>::infinity()), (Converted{0, 1, 0}));
    EXPECT_EQ(Convert(1, std::nan("")), (Converted{0, 1, 0}));
}
