#include "Services/Ascii/ValueText.h"

#include "Tests/Support/ResultItems.h"
#include "VorMsg/VvMeasureMsg.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace Services::Ascii {
namespace {

using Tests::ArrayOf;
using Tests::Item;
using Tests::Measure;
using Tests::MeasureItem;

std::string Fields(ValueKind kind, const Vor::Object& item, const LineFormat& format = {}) {
    std::string line;
    AppendValue(line, format, kind, item.Get());
    return line;
}

std::string Number(double value, const LineFormat& format = {}) {
    std::string line;
    AppendNumber(line, format, value);
    return line;
}

std::string Quoted(const std::string& text) {
    std::string line;
    AppendQuoted(line, text);
    return line;
}

Vor::Object TextItem(const std::string& text) {
    return Item(ResultInfo_TypeString, Tests::Text(text));
}

TEST(ValueText, WritesNumbersWithFixedDecimals) {
    EXPECT_EQ(Number(10.0014), "10.001");
    EXPECT_EQ(Number(-10.0016), "-10.002");
    EXPECT_EQ(Number(0), "0.000");
    EXPECT_EQ(Number(12345678), "12345678.000");
    EXPECT_EQ(Number(-0.5, {.decimals = 1}), "-0.5");
    EXPECT_EQ(Number(-7, {.decimals = 0}), "-7");
    EXPECT_EQ(Number(0.1234567891, {.decimals = 9}), "0.123456789");
    EXPECT_EQ(Number(std::numeric_limits<double>::max(), {.decimals = 9}).size(), 319u);
}

TEST(ValueText, RoundsFixedDecimalsHalfAwayFromZero) {
    EXPECT_EQ(Number(0.1215), "0.122");
    EXPECT_EQ(Number(-0.1215), "-0.122");
    EXPECT_EQ(Number(0.5005), "0.500") << "its product is below 500.5";
    EXPECT_EQ(Number(2.5, {.decimals = 0}), "3");
    EXPECT_EQ(Number(-2.5, {.decimals = 0}), "-3");
    EXPECT_EQ(Number(0.9995), "1.000");
}

TEST(ValueText, WritesTheDigitsOfNumbersWhoseProductHasNoFraction) {
    EXPECT_EQ(Number(9007199254740.990234375), "9007199254740.990");
    EXPECT_EQ(Number(9007199254740.9921875), "9007199254740.992");
    EXPECT_EQ(Number(9007199254740993.0, {.decimals = 0}), "9007199254740992");
    EXPECT_EQ(Number(-1e22), "-10000000000000000000000.000");
}

TEST(ValueText, WritesTheNumberOfARegister) {
    std::mt19937_64 random(20261122);
    std::uniform_real_distribution<double> values(-2147483.6, 2147483.6);
    for (int i = 0; i < 1000000; ++i) {
        const double value = i % 2 == 0 ? values(random) : std::round(values(random) * 16) / 16 + 0.0005;
        int notANumber = 0;
        int outOfRange = 0;
        const std::int32_t expected = VvMeasureMsg_Convert64fTo32s(value, 1000.0, notANumber, outOfRange);
        std::string digits = Number(value);
        digits.erase(digits.size() - 4, 1);
        ASSERT_EQ(std::stol(digits), expected) << value;
        ASSERT_EQ(notANumber + outOfRange, 0) << value;
    }
}

TEST(ValueText, WritesNoSignBeforeNothing) {
    EXPECT_EQ(Number(-0.0001), "0.000");
    EXPECT_EQ(Number(-0.0), "0.000");
    EXPECT_EQ(Number(-0.0, {.notation = Notation::Scientific}), "0.000e+00");
    EXPECT_EQ(Number(-0.0, {.notation = Notation::Shortest}), "0");
    EXPECT_EQ(Number(-0.0005001), "-0.001");
    EXPECT_EQ(Number(-1e-30, {.notation = Notation::Scientific}), "-1.000e-30");
}

TEST(ValueText, WritesNumbersInTheOtherNotations) {
    EXPECT_EQ(Number(1234.5678, {.notation = Notation::Scientific}), "1.235e+03");
    EXPECT_EQ(Number(1234.5678, {.notation = Notation::Shortest}), "1234.5678");
    EXPECT_EQ(Number(10, {.notation = Notation::Shortest}), "10");
}

TEST(ValueText, WritesTheDecimalSeparatorThatIsSet) {
    EXPECT_EQ(Number(1.5, {.decimalSeparator = ','}), "1,500");
    EXPECT_EQ(Number(1.5e9, {.decimalSeparator = ',', .notation = Notation::Scientific}), "1,500e+09");
    std::string line = "a.b;";
    AppendNumber(line, {.decimalSeparator = ','}, 2.5);
    EXPECT_EQ(line, "a.b;2,500") << "what stands before it stays";
}

TEST(ValueText, WritesMeasurements) {
    EXPECT_EQ(Fields(ValueKind::Measurement, MeasureItem(1.5, 1)), "1.500,1");
    EXPECT_EQ(Fields(ValueKind::Measurement, MeasureItem(1.5, 0), {.delimiter = "; "}), "1.500; 0");
    EXPECT_EQ(Fields(ValueKind::Value, MeasureItem(1.5, 1)), "1.500");
    EXPECT_EQ(Fields(ValueKind::Decision, MeasureItem(1.5, 0)), "0");
    EXPECT_EQ(Fields(ValueKind::Any, MeasureItem(1.5, 0)), "1.500");
    EXPECT_EQ(Fields(ValueKind::Value, Item(ResultInfo_TypeMeasurement, ArrayOf(Measure(2.5, 1), Measure(3.5, 1)))),
              "2.500")
        << "the first of an array";
}

TEST(ValueText, WritesTheInvalidTextInEachFieldWithoutValue) {
    const LineFormat format{.invalidText = "n/a"};
    const Vor::Object none;
    const Vor::Object null = Item(ResultInfo_TypeMeasurement, Tests::Null());
    const Vor::Object empty = Item(ResultInfo_TypeMeasurement, ArrayOf());
    const Vor::Object nan = MeasureItem(std::numeric_limits<double>::quiet_NaN(), 1);
    const Vor::Object infinite = MeasureItem(-std::numeric_limits<double>::infinity(), 1);
    for (const Vor::Object* item : {&none, &null, &empty, &nan, &infinite}) {
        EXPECT_EQ(Fields(ValueKind::Measurement, *item, format), "n/a,n/a");
        EXPECT_EQ(Fields(ValueKind::Value, *item, format), "n/a");
        EXPECT_EQ(Fields(ValueKind::Decision, *item, format), "n/a");
        EXPECT_EQ(Fields(ValueKind::Any, *item, format), "n/a");
    }
    EXPECT_EQ(Fields(ValueKind::Stamp, none, format), "n/a,n/a,n/a,n/a,n/a");
    EXPECT_EQ(Fields(ValueKind::Text, none, format), "n/a");
    EXPECT_EQ(Fields(ValueKind::Any, null, {.invalidText = ""}), "");
}

TEST(ValueText, WritesTheInvalidTextForAResultOfAnotherKind) {
    EXPECT_EQ(Fields(ValueKind::Measurement, TextItem("x")), "INVALID,INVALID");
    EXPECT_EQ(Fields(ValueKind::Text, MeasureItem(1, 1)), "INVALID");
    EXPECT_EQ(Fields(ValueKind::Stamp, MeasureItem(1, 1)), "INVALID,INVALID,INVALID,INVALID,INVALID")
        << "a measurement without a stamp";
}

TEST(ValueText, WritesStamps) {
    yStamp stamp;
    stamp.frameIndex = 7;
    stamp.time = 18446744073709551615u;
    stamp.encoder = -3;
    stamp.encoderAtZ = -4;
    stamp.inputs = 0x20;
    EXPECT_EQ(Fields(ValueKind::Stamp, Item(ResultInfo_TypeStamp, Tests::Stamp(stamp))),
              "7,18446744073709551615,-3,-4,2");
    EXPECT_EQ(Fields(ValueKind::Any, Item(ResultInfo_TypeStamp, Tests::Stamp(stamp)), {.delimiter = ";"}),
              "7;18446744073709551615;-3;-4;2");
}

TEST(ValueText, WritesTextsInQuotationMarks) {
    EXPECT_EQ(Fields(ValueKind::Text, TextItem("frame 1: max 2.5 mm")), "\"frame 1: max 2.5 mm\"");
    EXPECT_EQ(Fields(ValueKind::Any, TextItem("a,b")), "\"a,b\"");
    EXPECT_EQ(Quoted("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(Quoted(""), "\"\"");
    EXPECT_EQ(Quoted(std::string("a\r\n\0\x1B\x7F"
                                 "b",
                                 7)),
              "\"a     b\"")
        << "nothing in a text ends a line";
    EXPECT_EQ(Quoted("Höhe"), "\"Höhe\"");
    EXPECT_EQ(Quoted("H\xFFhe"), "\"H?he\"");
}

TEST(ValueText, CutsALongTextAtACharacter) {
    const std::string most(MaxTextSize - 1, 'x');
    EXPECT_EQ(Fields(ValueKind::Text, TextItem(most + "y")), "\"" + most + "y\"");
    EXPECT_EQ(Fields(ValueKind::Text, TextItem(most + "yz")), "\"" + most + "y\"");
    EXPECT_EQ(Fields(ValueKind::Text, TextItem(most + "ö")), "\"" + most + "\"");
    EXPECT_EQ(Fields(ValueKind::Text, TextItem(most + "\xF0\x9F\x98\x80")), "\"" + most + "\"");
}

} // namespace
} // namespace Services::Ascii
