#include "Sensor/Http/JsonSchema.h"

#include "Vor/ByteVector.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Http {
namespace {

using Json = nlohmann::json;
using VorApi::VorDataTree;
using Use = JsonSchema::Use;

Json Translated(const VorDataTree& schema, Use use = Use::Document) {
    std::string text = "before";
    JsonSchema::Append(text, schema, use);
    EXPECT_TRUE(text.starts_with("before{")) << text;
    return Json::parse(text.substr(6));
}

Json Translated(const Json& schema, Use use = Use::Document) {
    return Translated(VorDataTree::FromJson(schema), use);
}

Json Translated(const Vor::Properties::Node& node, Use use = Use::Document) {
    VorDataTree schema;
    Vor::Properties::VorDataTreeSerializer::SerializeSchema(node, schema);
    return Translated(schema, use);
}

Json DocumentSchema(const Json& document, const std::vector<JsonSchema::Member>& more = {}) {
    std::string text;
    JsonSchema::AppendOfDocument(text, VorDataTree::FromJson(document), more);
    Json schema = Json::parse(text);
    EXPECT_EQ(schema["$schema"], JsonSchema::Dialect);
    schema.erase("$schema");
    return schema;
}

enum class Colour { Red = 0, Blue = 2 };

class Point : public Vor::Params::Group {
public:
    Point() {
        Register("x", x, "X");
        Register("name", name);
    }

    Vor::Params::Value<unsigned short> x;
    Vor::Params::Value<std::string> name;
};

TEST(JsonSchemaTest, AValueHasItsKeywords) {
    Vor::Params::Value<long long> value;
    value.SetTitle("Height");
    value.SetSortOrder(200);
    value.EnableReadOnly();
    value.SetReadOnly(true);
    value.EnableDescription(true);
    value.SetDescription("Above the ground");
    value.EnableUnits(true);
    value.SetUnits("mm");
    value.EnableMinimum(true);
    value.SetMinimum(-5);
    value.EnableMaximum(true);
    value.SetMaximum(7);
    value.EnableExclusiveMinimum(true);
    value.SetExclusiveMinimum(-6);
    value.EnableExclusiveMaximum(true);
    value.SetExclusiveMaximum(8);
    value.EnableActual(true);
    value.SetActual(3);
    value.EnableScale(true);
    value.SetExtendedType("length");
    value.EnableMeta(true);
    value.SetMeta("m");
    value.EnableVisibility(true);
    value.SetVisibility(1);
    EXPECT_EQ(Translated(value), (Json{{"type", "integer"},
                                       {"title", "Height"},
                                       {"description", "Above the ground"},
                                       {"readOnly", true},
                                       {"minimum", -5},
                                       {"maximum", 7},
                                       {"exclusiveMinimum", -6},
                                       {"exclusiveMaximum", 8},
                                       {"x-sortOrder", 200},
                                       {"x-units", "mm"},
                                       {"x-actual", 3},
                                       {"x-scale", static_cast<int>(value.GetScale())},
                                       {"x-extendedType", "length"},
                                       {"x-meta", "m"},
                                       {"x-visibility", 1}}));
}

TEST(JsonSchemaTest, WhetherAValueIsUsedIsNoStandardKeyword) {
    Vor::Params::Value<bool> value;
    value.EnableUsed();
    value.SetUsed(false);
    const Json schema = Translated(value);
    EXPECT_EQ(schema["type"], "boolean");
    EXPECT_EQ(schema["x-used"], false);
}

TEST(JsonSchemaTest, TheTypesOfValues) {
    EXPECT_EQ(Translated(Vor::Properties::Value<std::string>()), (Json{{"type", "string"}}));
    EXPECT_EQ(Translated(Vor::Properties::Value<Colour>()), (Json{{"type", "integer"}}));
    EXPECT_EQ(Translated(Vor::Properties::Value<Vor::Properties::ByteVector>()),
              (Json{{"type", "string"}, {"contentEncoding", "base64"}}));
    EXPECT_EQ(Translated(Vor::Properties::Value<std::vector<std::string>>()),
              (Json{{"type", "array"}, {"items", {{"type", "string"}}}}));
    EXPECT_EQ(Translated(Vor::Params::Value<unsigned int>())["minimum"], 0);
}

TEST(JsonSchemaTest, UnionsOfTypes) {
    EXPECT_EQ(Translated(Json{{"type", {"number", "string", "null"}}}), (Json{{"type", {"number", "string", "null"}}}));
    EXPECT_EQ(Translated(Json{{"type", {"binary", "null"}}}),
              (Json{{"type", {"string", "null"}}, {"contentEncoding", "base64"}}));
    EXPECT_EQ(Translated(Json{{"type", {"string", "binary"}}}),
              (Json{{"type", Json::array({"string"})}, {"contentEncoding", "base64"}}));
    EXPECT_EQ(Translated(Json{{"anyOf", {{{"type", "binary"}}, {{"type", "null"}}}}}),
              (Json{{"anyOf", {{{"type", "string"}, {"contentEncoding", "base64"}}, {{"type", "null"}}}}}));
}

TEST(JsonSchemaTest, WhatIsNoTypeOfJsonSchemaIsMarked) {
    for (const Json& type :
         {Json("colour"), Json(""), Json(7), Json(), Json::array(), Json::array({"string", "colour"})}) {
        EXPECT_EQ(Translated(Json{{"type", type}}), (Json{{"x-type", type}}));
    }
}

TEST(JsonSchemaTest, AnEnumerationHasItsTexts) {
    Vor::Params::Enum<Colour> colour;
    EXPECT_FALSE(Translated(colour).contains("enum")) << "all values are accepted";
    colour.AddOption(Colour::Red, "Red");
    colour.AddOption(Colour::Blue, "Blue");
    const Json schema = Translated(colour);
    EXPECT_EQ(schema["enum"], (Json{0, 2}));
    EXPECT_EQ(schema["x-enumText"], (Json{"Red", "Blue"}));
    EXPECT_FALSE(schema.contains("enumText"));
}

TEST(JsonSchemaTest, ALimitThatReadersWouldRoundIsAText) {
    Vor::Params::Value<unsigned long long> value;
    value.EnableMaximum(true);
    value.SetMaximum(std::numeric_limits<unsigned long long>::max());
    EXPECT_EQ(Translated(value)["x-maximum"], "18446744073709551615");
    EXPECT_FALSE(Translated(value).contains("maximum"));
    EXPECT_EQ(Translated(value)["minimum"], 0);

    constexpr std::int64_t MaxExact = 9007199254740991;
    for (const char* const limit : {"minimum", "maximum", "exclusiveMinimum", "exclusiveMaximum"}) {
        EXPECT_EQ(Translated(Json{{limit, MaxExact}}), (Json{{limit, MaxExact}}));
        EXPECT_EQ(Translated(Json{{limit, -MaxExact}}), (Json{{limit, -MaxExact}}));
        EXPECT_EQ(Translated(Json{{limit, 1.5}}), (Json{{limit, 1.5}}));
        EXPECT_EQ(Translated(Json{{limit, MaxExact + 1}}), (Json{{std::string("x-") + limit, "9007199254740992"}}));
        EXPECT_EQ(Translated(Json{{limit, -MaxExact - 1}}), (Json{{std::string("x-") + limit, "-9007199254740992"}}));
        EXPECT_EQ(Translated(Json{{limit, std::numeric_limits<std::int64_t>::min()}}),
                  (Json{{std::string("x-") + limit, "-9223372036854775808"}}));
    }
}

TEST(JsonSchemaTest, AKeywordWhoseValueIsOfAnotherKindIsMarked) {
    Vor::Params::Value<std::string> text;
    text.EnableMinimum(true);
    text.SetMinimum("a");
    EXPECT_EQ(Translated(text)["x-minimum"], "a");
    VorDataTree infinite;
    infinite["maximum"].Set(std::numeric_limits<double>::infinity());
    EXPECT_FALSE(Translated(infinite).contains("maximum"));
    const Json odd{{"title", 1},     {"description", 2}, {"readOnly", "no"},      {"maximum", true},
                   {"minItems", -1}, {"maxItems", 1.5},  {"items", true},         {"properties", 3},
                   {"enum", 4},      {"format", 5},      {"anyOf", Json::array()}};
    Json marked = Json::object();
    for (const auto& [name, value] : odd.items()) {
        marked["x-" + name] = value;
    }
    EXPECT_EQ(Translated(odd), marked);
}

TEST(JsonSchemaTest, UnknownKeywordsAreMarkedOnce) {
    EXPECT_EQ(Translated(Json{{"enumText", {"A"}}, {"x-meta", "m"}, {"$ref", "#"}, {"default", 1}}),
              (Json{{"x-enumText", {"A"}}, {"x-meta", "m"}, {"x-$ref", "#"}, {"x-default", 1}}));
}

TEST(JsonSchemaTest, AFormatIsOneThatIsKnown) {
    Vor::Params::Value<std::string> text;
    text.EnableFormat(true);
    text.SetFormat("ipv4");
    EXPECT_EQ(Translated(text)["format"], "ipv4");
    text.SetFormat("colour");
    EXPECT_EQ(Translated(text)["x-format"], "colour");
    EXPECT_FALSE(Translated(text).contains("format"));
}

TEST(JsonSchemaTest, AGroupHasItsMembersInTheirOrder) {
    Point point;
    std::string text;
    VorDataTree tree;
    Vor::Properties::VorDataTreeSerializer::SerializeSchema(point, tree);
    JsonSchema::Append(text, tree, Use::Document);
    EXPECT_LT(text.find("\"x\":"), text.find("\"name\":"));
    const Json schema = Json::parse(text);
    EXPECT_EQ(schema["type"], "object");
    EXPECT_EQ(schema["properties"]["x"],
              (Json{{"type", "integer"}, {"title", "X"}, {"x-sortOrder", 0}, {"minimum", 0}}));
    EXPECT_EQ(schema["required"], (Json{"x", "name"}));
}

TEST(JsonSchemaTest, AMemberOfAnUpdateMayBeLeftOut) {
    const Json nested{{"type", "object"},
                      {"properties", {{"part", {{"type", "object"}, {"properties", {{"a", Json::object()}}}}}}}};
    EXPECT_EQ(Translated(nested, Use::Kind)["properties"]["part"]["required"], Json::array({"a"}));
    const Json update = Translated(nested, Use::Update);
    EXPECT_FALSE(update.contains("required"));
    EXPECT_FALSE(update["properties"]["part"].contains("required"));
    EXPECT_FALSE(Translated(Vor::Params::Group()).contains("required"));
}

TEST(JsonSchemaTest, NamesOfMembersAreNoKeywords) {
    const Json schema{{"properties", {{"type", {{"type", "binary"}}}, {"units", {{"units", "mm"}}}}}};
    EXPECT_EQ(
        Translated(schema, Use::Update),
        (Json{{"properties",
               {{"type", {{"type", "string"}, {"contentEncoding", "base64"}}}, {"units", {{"x-units", "mm"}}}}}}));
}

TEST(JsonSchemaTest, EachElementOfAnArrayHasASchema) {
    Vor::Params::Array<Point> points("points");
    points.EnableMinItems(true);
    points.EnableMaxItems(true);
    const Json none = Translated(points);
    EXPECT_EQ(none["type"], "array");
    EXPECT_EQ(none["minItems"], 0);
    EXPECT_EQ(none["maxItems"], 4294967295);
    EXPECT_FALSE(none.contains("items") || none.contains("prefixItems"));

    points.Resize(2);
    points.At(1).x.EnableMaximum(true);
    points.At(1).x.SetMaximum(9);
    const Json two = Translated(points);
    ASSERT_EQ(two["prefixItems"].size(), 2U);
    EXPECT_FALSE(two["prefixItems"][0]["properties"]["x"].contains("maximum"));
    EXPECT_EQ(two["prefixItems"][1]["properties"]["x"]["maximum"], 9);
    EXPECT_FALSE(two.contains("items"));
    EXPECT_EQ(Translated(points, Use::Kind)["items"], two["prefixItems"][0]);
    EXPECT_FALSE(Translated(points, Use::Kind).contains("prefixItems"));
}

TEST(JsonSchemaTest, WhatIsNoSchemaAdmitsAll) {
    for (const Json& nothing : {Json(), Json("x"), Json::array(), Json::object()}) {
        EXPECT_EQ(Translated(nothing), Json::object());
    }
}

TEST(JsonSchemaTest, TextsOfAnyKindAreJson) {
    VorDataTree tree;
    tree["title"].Set("a\"\xff\n");
    tree["b\"\n"].Set(1.0);
    EXPECT_EQ(Translated(tree), (Json{{"title", "a\"\xef\xbf\xbd\n"}, {"x-b\"\n", 1.0}}));
}

TEST(JsonSchemaTest, ADocumentHasOneSchemaForAllOfItsParts) {
    const Json document{
        {"_schema",
         {{"type", "object"}, {"title", "All"}, {"extra", 1}, {"properties", {{"id", {{"type", "string"}}}}}}},
        {"id", "a"},
        {"part",
         {{"_schema", {{"type", "object"}, {"properties", {{"x", {{"type", "integer"}, {"units", "mm"}}}}}}},
          {"x", 1}}},
        {"list", {{{"_schema", {{"properties", {{"y", {{"type", "binary"}}}}}}}, {"y", "AA=="}}, {{"z", 1.5}}}},
        {"none", nullptr},
        {"nothing", Json::array()},
        {"flag", true}};
    const Json schema = DocumentSchema(document, {{"_links", R"({"type":"object"})"}});
    EXPECT_EQ(schema["title"], "All");
    EXPECT_EQ(schema["x-extra"], 1);
    EXPECT_EQ(schema["required"], (Json{"flag", "id", "list", "none", "nothing", "part", "_links"}));
    const Json& properties = schema["properties"];
    EXPECT_EQ(properties["_links"], (Json{{"type", "object"}}));
    EXPECT_EQ(properties["id"], (Json{{"type", "string"}}));
    EXPECT_EQ(properties["part"], (Json{{"type", "object"},
                                        {"properties", {{"x", {{"type", "integer"}, {"x-units", "mm"}}}}},
                                        {"required", Json::array({"x"})}}));
    EXPECT_EQ(properties["list"]["prefixItems"][0]["properties"]["y"],
              (Json{{"type", "string"}, {"contentEncoding", "base64"}}));
    EXPECT_EQ(properties["list"]["prefixItems"][1]["properties"]["z"], (Json{{"type", "number"}}));
    EXPECT_EQ(properties["none"], (Json{{"type", "null"}}));
    EXPECT_EQ(properties["nothing"], (Json{{"type", "array"}}));
    EXPECT_EQ(properties["flag"], (Json{{"type", "boolean"}}));
    EXPECT_FALSE(properties.contains("_schema"));
}

TEST(JsonSchemaTest, AMemberThatIsMissingIsDescribedAndNotRequired) {
    const Json schema = DocumentSchema({{"_schema", {{"properties", {{"a", {{"type", "string"}}}}}}}});
    EXPECT_EQ(schema, (Json{{"type", "object"}, {"properties", {{"a", {{"type", "string"}}}}}}));
    EXPECT_EQ(DocumentSchema(Json::object()), (Json{{"type", "object"}, {"properties", Json::object()}}));
}

TEST(JsonSchemaTest, TheSchemasOfPartsAreLeftOutOfTheDocument) {
    const Json document{
        {"a", {{"_schema", 1}, {"b", {{{"_schema", 2}, {"c", nullptr}}, 7}}}}, {"_schema", 3}, {"d", "x\"y"}};
    std::string text;
    JsonSchema::AppendWithoutSchemas(text, VorDataTree::FromJson(document));
    EXPECT_EQ(Json::parse(text), (Json{{"a", {{"b", {{{"c", nullptr}}, 7}}}}, {"d", "x\"y"}}));
}

} // namespace
} // namespace Sensor::Http
