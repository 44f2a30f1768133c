#include "Sensor/PrintableText.h"

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(PrintableText, HasQuestionMarksForControlCharacters) {
    EXPECT_EQ(PrintableText("a\x1b[31m\nb\x7f Öl"), "a?[31m?b? Öl");
}

TEST(PrintableText, IsFilledUpToANumberOfCharacters) {
    EXPECT_EQ(TextWidth("Öl"), 2U);
    EXPECT_EQ(PaddedText("Öl", 4), "Öl  ");
    EXPECT_EQ(PaddedText("long", 3), "long");
}

} // namespace
} // namespace Sensor
