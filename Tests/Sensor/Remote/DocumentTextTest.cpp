#include "Sensor/Remote/DocumentText.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Remote {
namespace {

using nlohmann::json;

TEST(DocumentText, LeavesLinksOut) {
    const json document = json::parse(
        R"({"_links":{"self":1},"a":[{"_links":{},"b":2},[3]],"_embedded":{"item":[{"_links":{},"c":{"_links":4}}]}})");
    EXPECT_EQ(WithoutLinks(document), json::parse(R"({"a":[{"b":2},[3]],"_embedded":{"item":[{"c":{}}]}})"));
    EXPECT_EQ(WithoutLinks(7), 7);
}

TEST(DocumentText, IsJsonOfWholeLines) {
    const json document = {{"a", {1, "H\u00f6he"}}, {"b", json::object()}};
    EXPECT_EQ(PrintableJson(document, -1), R"({"a":[1,"Höhe"],"b":{}})");
    EXPECT_EQ(PrintableJson(document, 2), "{\n  \"a\": [\n    1,\n    \"Höhe\"\n  ],\n  \"b\": {}\n}");
}

TEST(DocumentText, EscapesWhatCouldChangeTheTerminalAndStaysTheSameJson) {
    const json document = {{"\u202e", "a\xC2\x9B\x7F\x1B\n\u00f6"}, {"plain", "\u00f6"}};
    for (const int indent : {-1, 4}) {
        const std::string text = PrintableJson(document, indent);
        EXPECT_EQ(json::parse(text), document);
        EXPECT_NE(text.find("\"\\u202e\""), std::string::npos) << text;
        EXPECT_NE(text.find("\"a\\u009b\\u007f\\u001b\\n\\u00f6\""), std::string::npos) << text;
    }
    EXPECT_NE(PrintableJson(document, 4).find("\"plain\": \"ö\""), std::string::npos);
}

TEST(DocumentText, ReplacesWhatIsNoUtf8) {
    EXPECT_EQ(PrintableJson("a\xff", -1), "\"a\uFFFD\"");
}

} // namespace
} // namespace Sensor::Remote
