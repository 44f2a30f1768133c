#include "Sensor/PrintableText.h"

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(PrintableText, EscapesControlCharacters) {
    EXPECT_EQ(PrintableText("a\x1b[31m\nb\r\t\x7f Öl €"), "a\\x1b[31m\\nb\\r\\t\\x7f Öl €");
    EXPECT_EQ(PrintableText(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(PrintableText("\xc2\x9b"
                            "31m"),
              "\\u009b31m");
}

TEST(PrintableText, EscapesCharactersThatSeparateLinesOrTurnText) {
    EXPECT_EQ(PrintableText("\u061c\u2028\u202egpj\u2066\u200f"), "\\u061c\\u2028\\u202egpj\\u2066\\u200f");
}

TEST(PrintableText, EscapesBytesThatAreNotUtf8) {
    EXPECT_EQ(PrintableText("\xff"
                            "a\xe2\x82"
                            "b\xc0\x8a\xed\xa0\x80"),
              "\\xffa\\xe2\\x82b\\xc0\\x8a\\xed\\xa0\\x80");
    EXPECT_EQ(PrintableText("\x9b\xf0\x9f\x98\x80"), "\\x9b\xf0\x9f\x98\x80");
    EXPECT_EQ(PrintableText("a\x80\x80\x80\x80\x80"), "a\\x80\\x80\\x80\\x80\\x80");
}

TEST(PrintableText, IsFilledUpToANumberOfCharacters) {
    EXPECT_EQ(TextWidth("Öl"), 2U);
    EXPECT_EQ(PaddedText("Öl", 4), "Öl  ");
    EXPECT_EQ(PaddedText("long", 3), "long");
}

TEST(AbridgedText, LeavesOutTheMiddle) {
    EXPECT_EQ(AbridgedText("12345678", 8), "12345678");
    EXPECT_EQ(AbridgedText("123456789", 8), "123456... (1 byte left out) ...89");
    EXPECT_EQ(AbridgedText(std::string(1'000'000, 'x'), 8), "xxxxxx... (999992 bytes left out) ...xx");
}

TEST(AbridgedText, KeepsCharactersWhole) {
    EXPECT_EQ(AbridgedText("ÖÖÖÖÖÖ", 8), "ÖÖÖ... (4 bytes left out) ...Ö");
    EXPECT_EQ(AbridgedText("aÖÖÖÖÖÖ", 8), "aÖÖ... (6 bytes left out) ...Ö");
}

} // namespace
} // namespace Sensor
