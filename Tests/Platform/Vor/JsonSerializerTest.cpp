#include "Vor/JsonSerializer.h"

#include "Tests/Support/Failure.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <stdexcept>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Params::Array;
using Vor::Params::Enum;
using Vor::Params::Group;
using Vor::Properties::ByteVector;
using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;

namespace {

enum class Mode { Unknown = -1, Off = 0, On = 1 };

struct Point : Group {
    Point() {
        Register("x", x);
        Register("tags", tags);
    }
    Vor::Params::Value<unsigned short> x;
    Vor::Params::Value<std::vector<std::string>> tags;
};

struct Line : Group {
    Line() { Register("points", points); }
    Array<Point> points;
};

// One member of each kind.
struct Document : Group {
    Document() {
        Register("flag", flag);
        Register("small", small);
        Register("medium", medium);
        Register("large", large);
        Register("signed", number);
        Register("text", text);
        Register("bytes", bytes);
        Register("texts", texts);
        Register("numbers", numbers);
        Register("mode", mode);
        Register("inner", inner);
        Register("lines", lines);
    }
    Vor::Params::Value<bool> flag;
    Vor::Params::Value<unsigned short> small;
    Vor::Params::Value<unsigned int> medium;
    Vor::Params::Value<unsigned long long> large;
    Vor::Params::Value<long long> number;
    Vor::Params::Value<std::string> text;
    Vor::Params::Value<ByteVector> bytes;
    Vor::Params::Value<std::vector<std::string>> texts;
    Vor::Params::Value<std::vector<unsigned short>> numbers;
    Enum<Mode> mode;
    Point inner;
    Array<Line> lines;
};

const char* const FullText = R"({
    "flag": true, "small": 65535, "medium": 4294967295, "large": 18446744073709551615,
    "signed": -9223372036854775808, "text": "t\u00e9xt", "bytes": "Zm9v", "texts": ["a", ""], "numbers": [0, 65535],
    "mode": -1, "inner": {"x": 7, "tags": ["in"]},
    "lines": [{"points": []}, {"points": [{"x": 1, "tags": []}, {"x": 2, "tags": ["b"]}]}]})";

void ExpectRefused(const std::string& text, const std::string& message) {
    Document document;
    JsonSerializer::Deserialize(document, json::parse(FullText));
    const json before = JsonSerializer::Serialize(document);
    int changes = 0;
    document.flag.AddChangeHandler([&](Node&) { ++changes; });
    const json source = json::parse(text);
    EXPECT_FAILURE(JsonSerializer::Deserialize(document, source), yERROR_PARAMETER, message);
    EXPECT_FAILURE(JsonSerializer::Validate(document, source), yERROR_PARAMETER, message);
    EXPECT_EQ(JsonSerializer::Serialize(document), before);
    EXPECT_EQ(changes, 0);
}

} // namespace

TEST(JsonSerializerTest, EveryKindSurvivesADocument) {
    Document document;
    const json source = json::parse(FullText);
    JsonSerializer::Deserialize(document, source);
    EXPECT_EQ(JsonSerializer::Serialize(document), source);
    EXPECT_EQ(document.mode.Get(), Mode::Unknown);
    EXPECT_EQ(document.bytes.Get(), ByteVector("foo", 3));
    EXPECT_EQ(document.lines.At(1).points.At(1).x.Get(), 2);
    Document copy;
    JsonSerializer::Deserialize(copy, JsonSerializer::Serialize(document));
    EXPECT_EQ(JsonSerializer::Serialize(copy), source);
}

TEST(JsonSerializerTest, ANewDocumentHoldsTheDefaults) {
    EXPECT_EQ(JsonSerializer::Serialize(Document()).dump(),
              R"({"bytes":"","flag":false,"inner":{"tags":[],"x":0},"large":0,"lines":[],"medium":0,"mode":0,)"
              R"("numbers":[],"signed":0,"small":0,"text":"","texts":[]})");
}

TEST(JsonSerializerTest, UnknownKeysAreIgnoredAndMissingOnesKeepTheirValue) {
    Document document;
    document.small = 5;
    JsonSerializer::Deserialize(document, json::parse(R"({"unknown": [1, {}], "flag": true, "inner": {"y": 1}})"));
    EXPECT_TRUE(document.flag.Get());
    EXPECT_EQ(document.small.Get(), 5);
}

TEST(JsonSerializerTest, AnEmptyObjectChangesNothing) {
    Document document;
    document.lines.Resize(2);
    const json before = JsonSerializer::Serialize(document);
    JsonSerializer::Deserialize(document, json::object());
    EXPECT_EQ(JsonSerializer::Serialize(document), before);
}

TEST(JsonSerializerTest, ReadOnlyValuesAreAssigned) {
    Document document;
    document.small.EnableReadOnly();
    document.small.SetReadOnly(true);
    JsonSerializer::Deserialize(document, json::parse(R"({"small": 9})"));
    EXPECT_EQ(document.small.Get(), 9);
}

TEST(JsonSerializerTest, LimitsAreLeftToTheValidation) {
    Document document;
    document.small.EnableMaximum(true);
    document.small.SetMaximum(3);
    const json source = json::parse(R"({"small": 9})");
    EXPECT_FAILURE(JsonSerializer::Validate(document, source), yERROR_PARAMETER,
                   "small is set to be greater than its maximum.");
    EXPECT_EQ(document.small.Get(), 0);
    JsonSerializer::Deserialize(document, source);
    EXPECT_EQ(document.small.Get(), 9);
}

TEST(JsonSerializerTest, AReadOnlyValueThatWasValidatedIsPassedOverByTheNextRead) {
    Document document;
    document.small.EnableReadOnly();
    document.small.SetReadOnly(true);
    const json source = json::parse(R"({"small": 9, "flag": true})");
    JsonSerializer::Validate(document, source);
    JsonSerializer::Deserialize(document, source);
    EXPECT_EQ(document.small.Get(), 0);
    EXPECT_TRUE(document.flag.Get());
    JsonSerializer::Deserialize(document, source);
    EXPECT_EQ(document.small.Get(), 9);
}

TEST(JsonSerializerTest, WriteOnlyNodesAreWrittenAndNotRead) {
    Document document;
    document.small = 4;
    document.small.SetWriteOnly(true);
    document.inner.SetWriteOnly(true);
    document.lines.SetWriteOnly(true);
    JsonSerializer::Deserialize(document, json::parse(R"({"small": "text", "inner": 1, "lines": {}, "flag": true})"));
    EXPECT_EQ(document.small.Get(), 4);
    EXPECT_TRUE(document.flag.Get());
    EXPECT_EQ(JsonSerializer::Serialize(document).at("small"), 4);
    document.SetWriteOnly(true);
    JsonSerializer::Deserialize(document, "anything");
    JsonSerializer::Validate(document, "anything");
}

TEST(JsonSerializerTest, ATypeKeywordAsAMemberIsWrittenAndNotRead) {
    Group group;
    Vor::Properties::Internal::NodeType type("fixed");
    group.Structure::Register("type", type);
    JsonSerializer::Deserialize(group, json::parse(R"({"type": "other"})"));
    EXPECT_EQ(JsonSerializer::Serialize(group), json({{"type", "fixed"}}));
}

TEST(JsonSerializerTest, AnArrayGetsTheLengthOfTheDocument) {
    Document document;
    document.lines.Resize(3);
    std::string journal;
    document.lines.AddItemAddedHandler(
        [&](auto&, Line& line) { journal += "+" + std::to_string(line.points.Count()); });
    document.lines.AddItemRemovedHandler([&](auto&, Line&) { journal += "-"; });
    JsonSerializer::Deserialize(document, json::parse(R"({"lines": [{}]})"));
    EXPECT_EQ(journal, "--");
    JsonSerializer::Deserialize(document, json::parse(R"({"lines": [{}, {"points": [{}]}]})"));
    EXPECT_EQ(journal, "--+0");
    EXPECT_EQ(document.lines.At(1).points.Count(), 1U);
    JsonSerializer::Deserialize(document, json::parse(R"({"lines": []})"));
    EXPECT_EQ(document.lines.Count(), 0U);
}

TEST(JsonSerializerTest, ElementsThatStayKeepWhatTheDocumentLacks) {
    Document document;
    document.lines.Resize(1);
    document.lines.At(0).points.Resize(1);
    document.lines.At(0).points.At(0).x = 5;
    const Line* const line = &document.lines.At(0);
    JsonSerializer::Deserialize(document, json::parse(R"({"lines": [{"points": [{"tags": ["t"]}]}]})"));
    EXPECT_EQ(&document.lines.At(0), line);
    EXPECT_EQ(document.lines.At(0).points.At(0).x.Get(), 5);
}

TEST(JsonSerializerTest, MembersAreAssignedInTheOrderOfRegistration) {
    Document document;
    std::string order;
    document.flag.AddChangeHandler([&](Node&) { order += "flag "; });
    document.medium.AddChangeHandler([&](Node&) { order += "medium "; });
    document.text.AddChangeHandler([&](Node&) { order += "text "; });
    JsonSerializer::Deserialize(document, json::parse(R"({"text": "a", "medium": 1, "flag": true})"));
    EXPECT_EQ(order, "flag medium text ");
}

TEST(JsonSerializerTest, UpdateEndsRunOncePerChangeAfterTheWholeDocument) {
    Document document;
    document.medium = 1;
    std::string order;
    document.flag.AddUpdateEndHandler([&](auto&) { order += "flag" + document.text.Get() + " "; });
    document.medium.AddUpdateEndHandler([&](auto&) { order += "medium "; });
    document.text.AddUpdateEndHandler([&](auto&) { order += "text"; });
    JsonSerializer::Deserialize(document, json::parse(R"({"text": "a", "medium": 1, "flag": true})"));
    EXPECT_EQ(order, "flaga text");
}

TEST(JsonSerializerTest, AThrowingChangeHandlerLeavesItsValueAndRunsNoUpdateEnd) {
    Document document;
    bool ended = false;
    document.flag.AddUpdateEndHandler([&](auto&) { ended = true; });
    document.small.AddChangeHandler([](Node&) { throw std::runtime_error("no"); });
    EXPECT_THROW(JsonSerializer::Deserialize(document, json::parse(R"({"flag": true, "small": 3, "medium": 4})")),
                 std::runtime_error);
    EXPECT_TRUE(document.flag.Get());
    EXPECT_EQ(document.small.Get(), 0);
    EXPECT_EQ(document.medium.Get(), 0U);
    EXPECT_FALSE(ended);
}

TEST(JsonSerializerTest, AValueOfTheWrongKindIsRefusedWithItsPlaceAndNothingIsAssigned) {
    const std::string valid = R"({"flag": false, "small": 1, )";
    ExpectRefused(valid + R"("text": 3})", "text: expected a text but got the integer 3.");
    ExpectRefused(valid + R"("text": null})", "text: expected a text but got null.");
    ExpectRefused(R"({"flag": 1})", "flag: expected a boolean but got the integer 1.");
    ExpectRefused(valid + R"("medium": "7"})",
                  R"(medium: expected an integer from 0 to 4294967295 but got the text "7".)");
    ExpectRefused(valid + R"("medium": 1.5})",
                  "medium: expected an integer from 0 to 4294967295 but got a number that isn't an integer.");
    ExpectRefused(valid + R"("medium": true})", "medium: expected an integer from 0 to 4294967295 but got a boolean.");
    ExpectRefused(valid + R"("texts": "a"})", R"(texts: expected an array but got the text "a".)");
    ExpectRefused(valid + R"("texts": ["a", 1]})", "texts[1]: expected a text but got the integer 1.");
    ExpectRefused(valid + R"("numbers": [1, 65536]})",
                  "numbers[1]: expected an integer from 0 to 65535 but got the integer 65536.");
    ExpectRefused(valid + R"("bytes": "?"})", R"(bytes: expected bytes as base64 text but got the text "?".)");
    ExpectRefused(valid + R"("bytes": []})", "bytes: expected bytes as base64 text but got an array.");
    ExpectRefused(valid + R"("inner": []})", "inner: expected an object but got an array.");
    ExpectRefused(valid + R"("inner": {"x": {}}})", "inner.x: expected an integer from 0 to 65535 but got an object.");
    ExpectRefused(valid + R"("lines": {}})", "lines: expected an array but got an object.");
    ExpectRefused(valid + R"("lines": [{}, 5]})", "lines[1]: expected an object but got the integer 5.");
    ExpectRefused("[]", "the document: expected an object but got an array.");
}

TEST(JsonSerializerTest, AnErrorInAnElementThatIsYetToBeMadeIsFoundBeforeAnythingIsAssigned) {
    ExpectRefused(R"({"flag": false, "lines": [{}, {}, {"points": [{}, {"tags": [""]}, {"tags": [0]}]}]})",
                  "lines[2].points[2].tags[0]: expected a text but got the integer 0.");
}

TEST(JsonSerializerTest, IntegersOutOfTheirRangeAreRefused) {
    ExpectRefused(R"({"small": -1})", "small: expected an integer from 0 to 65535 but got the integer -1.");
    ExpectRefused(R"({"medium": 4294967296})",
                  "medium: expected an integer from 0 to 4294967295 but got the integer 4294967296.");
    ExpectRefused(R"({"large": -1})",
                  "large: expected an integer from 0 to 18446744073709551615 but got the integer -1.");
    ExpectRefused(R"({"signed": 9223372036854775808})",
                  "signed: expected an integer from -9223372036854775808 to 9223372036854775807 but got the integer "
                  "9223372036854775808.");
    ExpectRefused(R"({"mode": 2147483648})",
                  "mode: expected an integer from -2147483648 to 2147483647 but got the integer 2147483648.");
}

TEST(JsonSerializerTest, ALongTextIsNotRepeatedInTheMessage) {
    ExpectRefused(R"({"flag": ")" + std::string(41, 'x') + "\"}", "flag: expected a boolean but got a text.");
}

TEST(JsonSerializerTest, MoreElementsThanTheLimitOverAllArraysAreRefused) {
    Line line;
    json source = {{"points", json::array()}};
    source["points"].get_ref<json::array_t&>().resize(JsonSerializer::MaxItems + 1, json::object());
    EXPECT_FAILURE(JsonSerializer::Deserialize(line, source), yERROR_PARAMETER,
                   "points: expected at most 65536 elements in all arrays but got an array.");
    EXPECT_EQ(line.points.Count(), 0U);

    Document document;
    source = json::parse(R"({"lines": [{"points": []}, {"points": []}]})");
    source["lines"][0]["points"].get_ref<json::array_t&>().resize(40000, json::object());
    source["lines"][1]["points"].get_ref<json::array_t&>().resize(40000, json::object());
    EXPECT_FAILURE(JsonSerializer::Validate(document, source), yERROR_PARAMETER,
                   "lines[1].points: expected at most 65536 elements in all arrays but got an array.");
}

TEST(JsonSerializerTest, CheckingADocumentMakesAtMostOneElementMoreThanAreNeeded) {
    unsigned int made = 0;
    Array<Point> array("", [&] {
        ++made;
        return std::make_unique<Point>();
    });
    JsonSerializer::Deserialize(array, json::parse("[{}, {}, {}]"));
    EXPECT_EQ(array.Count(), 3U);
    EXPECT_EQ(made, 4U);
    JsonSerializer::Deserialize(array, json::parse("[{}, {}]"));
    EXPECT_EQ(made, 4U);
}

TEST(JsonSerializerTest, SchemaOfANestedDocument) {
    Line line;
    line.SetTitle("Line");
    line.points.Emplace();
    EXPECT_EQ(JsonSerializer::SerializeSchema(line), json::parse(R"({
        "type": "object", "title": "Line", "sortOrder": 0,
        "properties": {
            "points": {"type": "array", "title": "points", "sortOrder": 0, "items": [
                {"type": "object", "title": "", "sortOrder": 0, "properties": {
                    "x": {"type": "integer", "title": "x", "sortOrder": 0, "minimum": 0},
                    "tags": {"type": "array", "title": "tags", "sortOrder": 100, "items": {"type": "string"}}}}]}}})"));
}

TEST(JsonSerializerTest, SchemaIsTheSameWhetherWrittenFromTheNodeOrFromItsSchemaNode) {
    Document document;
    document.lines.Resize(2);
    document.mode.AddOption(Mode::On, "On");
    EXPECT_EQ(JsonSerializer::Serialize(document.Schema()), JsonSerializer::SerializeSchema(document));
}

TEST(JsonSerializerTest, ManyChangesCostNoMoreEachThanFew) {
    Group group;
    std::vector<std::unique_ptr<Vor::Params::Value<unsigned int>>> values;
    json source = json::object();
    int ended = 0;
    for (unsigned int i = 0; i < 10000; ++i) {
        values.push_back(std::make_unique<Vor::Params::Value<unsigned int>>());
        values.back()->AddUpdateEndHandler([&](auto&) { ++ended; });
        const std::string name = "m" + std::to_string(i);
        group.Register(name, *values.back());
        source[name] = i + 1;
    }
    JsonSerializer::Deserialize(group, source);
    EXPECT_EQ(ended, 10000);
    EXPECT_EQ(values[9999]->Get(), 10000U);
}
