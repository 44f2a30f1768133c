#include "Sensor/UtcText.h"

#include <chrono>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(UtcText, HasMilliseconds) {
    const std::chrono::system_clock::time_point epoch{};
    EXPECT_EQ(UtcText(epoch), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(UtcText(epoch + std::chrono::milliseconds(951'782'399'007)), "2000-02-28T23:59:59.007Z");
    EXPECT_EQ(UtcText(epoch + std::chrono::milliseconds(951'782'400'999)), "2000-02-29T00:00:00.999Z");
    EXPECT_EQ(UtcText(epoch - std::chrono::milliseconds(1)), "1969-12-31T23:59:59.999Z");
}

} // namespace
} // namespace Sensor
