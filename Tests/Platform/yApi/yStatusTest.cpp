#include "yApi/yStatus.h"

#include <type_traits>

#include <gtest/gtest.h>

TEST(yStatus, IsSigned32BitWithTheValuesOfThePlatform) {
    static_assert(std::is_same_v<yStatus, std::int32_t>);
    EXPECT_EQ(yOK, 1);
    EXPECT_EQ(yERROR, 0);
    EXPECT_EQ(yERROR_STATE, -1000);
    EXPECT_EQ(yERROR_NOT_FOUND, -999);
    EXPECT_EQ(yERROR_COMMAND, -998);
    EXPECT_EQ(yERROR_PARAMETER, -997);
    EXPECT_EQ(yERROR_UNIMPLEMENTED, -996);
    EXPECT_EQ(yERROR_TIMEOUT, -993);
    EXPECT_EQ(yERROR_SIZE, -992);
    EXPECT_EQ(yERROR_VERSION, -989);
    EXPECT_EQ(yERROR_ALREADY_EXISTS, -987);
    EXPECT_EQ(yERROR_FORMAT, -984);
    EXPECT_EQ(yERROR_READ_ONLY, -983);
    EXPECT_EQ(yERROR_WRITE_ONLY, -982);
    EXPECT_EQ(yERROR_CONFLICT, -980);
    EXPECT_EQ(yERROR_FULL, -977);
    EXPECT_EQ(yERROR_BUSY, -976);
    EXPECT_EQ(yERROR_PARTIAL, -2000);
}
