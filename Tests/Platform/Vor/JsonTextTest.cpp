#include "Vor/JsonText.h"

#include "Tests/Support/Failure.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Vor::ParseJson;

namespace {

std::string Nested(std::size_t levels, char open, char close) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i) {
        text += open;
        if (open == '{' && i + 1 < levels) {
            text += "\"a\":";
        }
    }
    return text + std::string(levels, close);
}

} // namespace

TEST(JsonTextTest, ReadsATextOfEveryKind) {
    const std::string text = R"({"a":[1,-2,3.5,true,null],"b":"x\n\u00e9"})";
    const nlohmann::json json = ParseJson(text.data(), text.size());
    EXPECT_EQ(json.dump(), "{\"a\":[1,-2,3.5,true,null],\"b\":\"x\\n\u00e9\"}");
}

TEST(JsonTextTest, KeepsTheFullRangeOfIntegers) {
    const nlohmann::json json = ParseJson("[18446744073709551615,-9223372036854775808]");
    EXPECT_EQ(json[0].get<std::uint64_t>(), 18446744073709551615U);
    EXPECT_EQ(json[1].get<std::int64_t>(), std::numeric_limits<std::int64_t>::min());
}

TEST(JsonTextTest, FailureSaysLineColumnAndReason) {
    EXPECT_FAILURE(ParseJson("{\n  \"a\": 1,\n  \"b\" 2\n}"), yERROR_FORMAT,
                   "Line 3, column 7: syntax error while parsing object separator - unexpected number literal; "
                   "expected ':'.");
}

TEST(JsonTextTest, EmptyAndCutTextsAreRefused) {
    EXPECT_FAILURE(ParseJson(""), yERROR_FORMAT,
                   "Line 1, column 1: syntax error while parsing value - unexpected end of input; expected '[', '{', "
                   "or a literal.");
    const std::string whole = R"({"key": [1, "text"], "b": {"c": false}})";
    for (std::size_t size = 1; size < whole.size(); ++size) {
        const auto failure = Tests::FailureOf([&] { ParseJson(whole.data(), size); });
        ASSERT_TRUE(failure) << size;
        EXPECT_EQ(failure->status, yERROR_FORMAT);
        EXPECT_EQ(failure->text.find("Line 1, column "), 0U) << failure->text;
    }
}

TEST(JsonTextTest, TextAfterTheValueIsRefused) {
    EXPECT_FAILURE(ParseJson("{} x"), yERROR_FORMAT,
                   "Line 1, column 4: syntax error while parsing value - invalid literal.");
}

TEST(JsonTextTest, WrongUtf8IsRefusedAndNotRepeatedInTheMessage) {
    EXPECT_FAILURE(ParseJson("[\"a\xff\"]"), yERROR_FORMAT,
                   "Line 1, column 4: syntax error while parsing value - invalid string: ill-formed UTF-8 byte.");
    for (const char* text : {"[\"\xc0\x80\"]", "[\"\xed\xa0\x80\"]", "[\"\xf4\x90\x80\x80\"]", "[\"\xe2\x82\"]"}) {
        const auto failure = Tests::FailureOf([&] { ParseJson(text); });
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->status, yERROR_FORMAT);
    }
}

TEST(JsonTextTest, NumberBeyondTheRangeOfRealsIsRefusedWithItsPlace) {
    EXPECT_FAILURE(ParseJson("[1,\n 1e999]"), yERROR_FORMAT, "Line 2, column 6: a number that is too large.");
}

TEST(JsonTextTest, NestingUpTo64IsReadAndDeeperIsRefused) {
    EXPECT_TRUE(ParseJson(Nested(64, '[', ']')).is_array());
    EXPECT_TRUE(ParseJson(Nested(64, '{', '}')).is_object());
    EXPECT_FAILURE(ParseJson(Nested(65, '[', ']')), yERROR_FORMAT,
                   "Line 1, column 65: nested more than 64 levels deep.");
    const auto failure = Tests::FailureOf([] { ParseJson(std::string(1000000, '[')); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->text, "Line 1, column 65: nested more than 64 levels deep.");
}

TEST(JsonTextTest, BracketsInTextsDoNotCountAsNesting) {
    const std::string text = "[\"" + std::string(100, '[') + "\\\"" + std::string(100, '{') + "\"]";
    EXPECT_EQ(ParseJson(text)[0].get<std::string>().size(), 201U);
}

TEST(JsonTextTest, ClosedNestingDoesNotAddUp) {
    std::string text = "[";
    for (int i = 0; i < 100; ++i) {
        text += i == 0 ? "[]" : ",[]";
    }
    EXPECT_EQ(ParseJson(text + "]").size(), 100U);
}

TEST(JsonTextTest, TextLargerThanTheLimitIsRefused) {
    const std::string text(Vor::JsonMaxSize + 1, ' ');
    EXPECT_FAILURE(ParseJson(text), yERROR_FORMAT, "67108865 bytes of JSON are more than the 67108864 that are read.");
}
