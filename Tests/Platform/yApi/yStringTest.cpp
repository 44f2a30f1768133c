#include "yApi/yString.h"

#include "Tests/Support/Faults.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

TEST(yString, EqualsComparesExactBytes) {
    EXPECT_TRUE(yStrEquals("abc", "abc"));
    EXPECT_FALSE(yStrEquals("abc", "abC"));
    EXPECT_FALSE(yStrEquals("abc", "abcd"));
    EXPECT_TRUE(yStrEquals("", ""));
}

TEST(yString, NullEqualsOnlyNull) {
    EXPECT_TRUE(yStrEquals(nullptr, nullptr));
    EXPECT_FALSE(yStrEquals(nullptr, ""));
    EXPECT_FALSE(yStrEquals("", nullptr));
}

TEST(yString, CatAppendsWhatFitsExactly) {
    std::array<char, 8> text{"abc"};
    EXPECT_EQ(yStrCat(text.data(), text.size(), "defg"), yOK);
    EXPECT_STREQ(text.data(), "abcdefg");
}

TEST(yString, CatThatDoesNotFitChangesNothing) {
    std::array<char, 8> text{"abc"};
    EXPECT_EQ(yStrCat(text.data(), text.size(), "defgh"), yERROR_SIZE);
    EXPECT_STREQ(text.data(), "abc");
    std::array<char, 3> unended{'a', 'b', 'c'};
    EXPECT_EQ(yStrCat(unended.data(), unended.size(), ""), yERROR_SIZE);
    EXPECT_EQ(yStrCat(unended.data(), 0, ""), yERROR_SIZE);
    EXPECT_EQ(unended[2], 'c');
}

TEST(yString, CatRefusesNullAndCanBeMadeToFail) {
    std::array<char, 8> text{"abc"};
    EXPECT_EQ(yStrCat(nullptr, 8, "d"), yERROR_PARAMETER);
    EXPECT_EQ(yStrCat(text.data(), 8, nullptr), yERROR_PARAMETER);
    Tests::Faults faults;
    faults.Set("yStrCat", -1);
    EXPECT_EQ(yStrCat(text.data(), 8, "d"), -1);
    EXPECT_STREQ(text.data(), "abc");
}

TEST(yString, FindFirstReturnsTheFirstOccurrence) {
    const char* text = "x.vrjob.vrjob";
    EXPECT_EQ(yStrFindFirst(text, ".vrjob"), text + 1);
    EXPECT_EQ(yStrFindFirst(text, ".job"), nullptr);
    EXPECT_EQ(yStrFindFirst(text, ""), text);
    EXPECT_EQ(yStrFindFirst(nullptr, "a"), nullptr);
    EXPECT_EQ(yStrFindFirst(text, nullptr), nullptr);
}
