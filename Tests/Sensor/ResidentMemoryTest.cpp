#include "Sensor/ResidentMemory.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(ResidentMemory, RisesByWhatTheProgramUses) {
    constexpr std::size_t Size = std::size_t{64} * 1024 * 1024;
    const auto before = ResidentMemory();
    EXPECT_GT(before, 0U);
    const std::string used(Size, 'x');
    EXPECT_GT(ResidentMemory(), before + Size / 2);
    EXPECT_EQ(used.back(), 'x');
}

} // namespace
} // namespace Sensor
