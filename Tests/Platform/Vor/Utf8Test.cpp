#include "Vor/Utf8.h"

#include <gtest/gtest.h>

namespace Vor {
namespace {

TEST(Utf8, AcceptsEachLengthOfSequence) {
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("abc"));
    EXPECT_TRUE(IsUtf8("\xC2\x80\xDF\xBF"));
    EXPECT_TRUE(IsUtf8("\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"));
    EXPECT_TRUE(IsUtf8("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"));
}

TEST(Utf8, RefusesWhatIsIllFormed) {
    for (const char* text : {"\x80", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2\x41", "\xE0\x9F\xBF", "\xE2\x82",
                             "\xE2\x82\x41", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
                             "\xF0\x90\x80", "\xF0\x90\x80\x41", "a\xFF"}) {
        EXPECT_FALSE(IsUtf8(text)) << text;
    }
}

} // namespace
} // namespace Vor
