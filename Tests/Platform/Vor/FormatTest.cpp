#include "Vor/Format.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

using Vor::Format;

TEST(FormatTest, FillsPlainConversionsInOrder) {
    EXPECT_EQ(Format("%s has %d of %u", "box", -3, 7U), "box has -3 of 7");
    EXPECT_EQ(Format("%s", std::string("text")), "text");
    EXPECT_EQ(Format("%zu %lu %llu %ld", std::size_t{1}, 2UL, 3ULL, -4L), "1 2 3 -4");
}

TEST(FormatTest, FillsPositionalConversionsInAnyOrderAndMoreThanOnce) {
    EXPECT_EQ(Format("%2$s before %1$s, %1$s after %2$s", "a", "b"), "b before a, a after b");
    EXPECT_EQ(Format("[%1$s] %2$d", "x", 5), "[x] 5");
}

TEST(FormatTest, PositionsDontMoveThePlainConversions) {
    EXPECT_EQ(Format("%2$s %s %s", "a", "b"), "b a b");
}

TEST(FormatTest, BrokenPlaceholderIsCopiedAndTheOthersAreFilled) {
    EXPECT_EQ(Format("Error loading connection map '%$1s' for service '%2$s'", "map", "service"),
              "Error loading connection map '%$1s' for service 'service'");
    EXPECT_EQ(Format("%y %0$s %n %", 1), "%y %0$s %n %");
    EXPECT_EQ(Format("%-"), "%-");
    EXPECT_EQ(Format("%5.", 1), "%5.");
    EXPECT_EQ(Format("%l", 1), "%l");
}

TEST(FormatTest, MissingArgumentsLeaveTheirConversionUnchanged) {
    EXPECT_EQ(Format("%s and %d"), "%s and %d");
    EXPECT_EQ(Format("%s and %-8.3f", "one"), "one and %-8.3f");
    EXPECT_EQ(Format("%3$s %1$s", "one"), "%3$s one");
    EXPECT_EQ(Format("%*d|%d", 5), "%*d|5");
}

TEST(FormatTest, TextUsedAsFormatSurvivesItsPerCentSigns) {
    EXPECT_EQ(Format("50% done, 100%"), "50% done, 100%");
    EXPECT_EQ(Format("TT-TT-TT!@#$%"), "TT-TT-TT!@#$%");
    EXPECT_EQ(Format("a %s b %999999999999d c %n"), "a %s b %999999999999d c %n");
}

TEST(FormatTest, TwoPerCentSignsAreOne) {
    EXPECT_EQ(Format("%%"), "%");
    EXPECT_EQ(Format("%d%% of %%s", 4), "4% of %s");
    EXPECT_EQ(Format("%5%"), "%5%");
}

TEST(FormatTest, AppliesFlagsWidthAndPrecision) {
    EXPECT_EQ(Format("%05d|%-5d|%+d|% d|%5d", 42, 42, 42, 42, 42), "00042|42   |+42| 42|   42");
    EXPECT_EQ(Format("%#x|%X|%#o|%08.3f|%.0f|%e", 255, 255, 8, 3.14159, 2.5, 1500.0),
              "0xff|FF|010|0003.142|2|1.500000e+03");
    EXPECT_EQ(Format("%5s|%-5s|%.2s|%1$6s", "abc", "abc", "abc"), "  abc|abc  |ab|   abc");
    EXPECT_EQ(Format("%*d|%-*d|%.*f|%*d", 5, 1, 4, 2, 2, 3.14159, -3, 7), "    1|2   |3.14|7  ");
}

TEST(FormatTest, WiderThanTheLimitIsCopied) {
    EXPECT_EQ(Format("%4097d", 1), "%4097d");
    EXPECT_EQ(Format("%.4097f", 1.0), "%.4097f");
    EXPECT_EQ(Format("%*d", 4097, 1), "%*d");
    EXPECT_EQ(Format("%4096d", 1).size(), 4096U);
}

TEST(FormatTest, IntegersAreReadWithTheirOwnWidth) {
    EXPECT_EQ(Format("%u", -1), "4294967295");
    EXPECT_EQ(Format("%x", static_cast<std::int8_t>(-1)), "ffffffff");
    EXPECT_EQ(Format("%u", std::numeric_limits<std::int64_t>::min()), "9223372036854775808");
    EXPECT_EQ(Format("%d", std::numeric_limits<std::uint64_t>::max()), "-1");
    EXPECT_EQ(Format("%d", std::int64_t{-5000000000}), "-5000000000");
    EXPECT_EQ(Format("%hhu %hd", 257, 65537), "1 1");
}

TEST(FormatTest, ArgumentsOfAnotherKindAreConverted) {
    EXPECT_EQ(Format("%s %s %s", 5, -6LL, 7U), "5 -6 7");
    EXPECT_EQ(Format("%s %d", true, true), "true 1");
    EXPECT_EQ(Format("%d %u", "text", std::string("more")), "text more");
    EXPECT_EQ(Format("%d", 3.99), "3");
    EXPECT_EQ(Format("%.1f %g", 2, 3U), "2.0 3");
    EXPECT_EQ(Format("%s", 0.5), "0.5");
    EXPECT_EQ(Format("%d", std::nan("")), "nan");
    EXPECT_EQ(Format("%c%c", 'o', 'k'), "ok");
}

TEST(FormatTest, EnumerationsAreTheirIntegers) {
    enum class Small : std::uint8_t { A = 200 };
    enum class Wide : int { B = -1 };
    EXPECT_EQ(Format("%hhu %d", Small::A, Wide::B), "200 -1");
}

TEST(FormatTest, NullTextsAreTolerated) {
    EXPECT_EQ(Format("%s", static_cast<const char*>(nullptr)), "(null)");
    EXPECT_EQ(Format(nullptr, 1), "");
}

TEST(FormatTest, PointersArePrinted) {
    int value = 0;
    EXPECT_EQ(Format("%p", static_cast<const void*>(&value)).substr(0, 2), "0x");
}
