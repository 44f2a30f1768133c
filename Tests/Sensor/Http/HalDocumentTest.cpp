#include "Sensor/Http/HalDocument.h"

#include <memory>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Http {
namespace {

VorApi::VorDataTree TreeOf(const char* json) {
    return VorApi::VorDataTree::FromJson(nlohmann::json::parse(json));
}

TEST(HalDocumentTest, HasALinkToItself) {
    EXPECT_EQ((HalDocument{"/a", TreeOf(R"({"x":1})")}.Text()), R"({"_links":{"self":{"href":"/a"}},"x":1})");
    for (const char* const nothing : {"{}", "null", "[1]", "7"}) {
        EXPECT_EQ((HalDocument{"/a", TreeOf(nothing)}.Text()), R"({"_links":{"self":{"href":"/a"}}})") << nothing;
    }
}

TEST(HalDocumentTest, RelationsKeepTheirOrderAndAreArraysAsTheyWereTold) {
    HalDocument document{"/a", TreeOf("{}")};
    document.links = {
        {"next", "/b"}, {"vor:command", "/c", true}, {"x", "/d"}, {"vor:command", "/e", true}, {"x", "/f"}};
    EXPECT_EQ(document.Text(), R"({"_links":{"self":{"href":"/a"},"next":{"href":"/b"},)"
                               R"("vor:command":[{"href":"/c"},{"href":"/e"}],"x":[{"href":"/d"},{"href":"/f"}]}})");
    EXPECT_TRUE(document.HasLink("next"));
    EXPECT_FALSE(document.HasLink("self"));
}

TEST(HalDocumentTest, PropertiesBelongToTheLinkOrThePart) {
    HalDocument document{"/a", TreeOf(R"({"x":1})")};
    document.links = {{"curies", "/rels/{rel}", true, TreeOf(R"({"name":"vor","templated":true})")}};
    document.embedded = {{{"item", "/a/1", true, TreeOf(R"({"title":"One"})")}}, {{"one", "/a/2"}}};
    EXPECT_EQ(
        document.Text(),
        R"({"_links":{"self":{"href":"/a"},"curies":[{"href":"/rels/{rel}","name":"vor","templated":true}]},"x":1,)"
        R"("_embedded":{"item":[{"_links":{"self":{"href":"/a/1"}},"title":"One"}],)"
        R"("one":{"_links":{"self":{"href":"/a/2"}}}}})");
}

TEST(HalDocumentTest, AnExpandedPartIsItsDocument) {
    const auto part = std::make_shared<HalDocument>(HalDocument{"/a/1", TreeOf(R"({"y":[2]})")});
    HalDocument document{"/a", TreeOf("{}")};
    document.embedded.push_back({{"item", "/a/1", true}, part});
    EXPECT_EQ(document.Text(), R"({"_links":{"self":{"href":"/a"}},)"
                               R"("_embedded":{"item":[{"_links":{"self":{"href":"/a/1"}},"y":[2]}]}})");
}

TEST(HalDocumentTest, AJsonSchemaDescribesAllOfTheDocument) {
    HalDocument document{
        "/a",
        TreeOf(R"({"x":1,"_schema":{"properties":{"x":{"type":"integer","units":"mm"}}},"p":{"_schema":{},"y":2}})")};
    document.hasJsonSchema = true;
    auto json = nlohmann::json::parse(document.Text());
    auto schema = json["_schema"];
    json.erase("_schema");
    EXPECT_EQ(json, nlohmann::json::parse(R"({"_links":{"self":{"href":"/a"}},"x":1,"p":{"y":2}})"));
    EXPECT_EQ(schema["$schema"], "https://json-schema.org/draft/2020-12/schema");
    EXPECT_EQ(schema["properties"]["x"]["x-units"], "mm");
    EXPECT_EQ(schema["properties"]["p"]["properties"]["y"]["type"], "integer");
    EXPECT_EQ(schema["properties"]["_links"], nlohmann::json::parse(HalDocument::LinksSchema));
    EXPECT_EQ(schema["required"], (nlohmann::json{"p", "x", "_links", "_schema"}));
    EXPECT_FALSE(schema["properties"].contains("_embedded"));

    auto part = std::make_shared<HalDocument>(HalDocument{"/a/1", TreeOf(R"({"z":true})")});
    part->hasJsonSchema = true;
    document.embedded.push_back({{"item", "/a/1", true}, part});
    json = nlohmann::json::parse(document.Text());
    EXPECT_EQ(json["_schema"]["properties"]["_embedded"], nlohmann::json::parse(HalDocument::EmbeddedSchema));
    EXPECT_EQ(json["_embedded"]["item"][0]["_schema"]["properties"]["z"]["type"], "boolean");
}

TEST(HalDocumentTest, TextsOfAnyKindAreJson) {
    HalDocument document{"/a\"\xff", TreeOf("{}")};
    document.links = {{"a\nb", "/\\"}};
    const auto json = nlohmann::json::parse(document.Text());
    EXPECT_EQ(json["_links"]["a\nb"]["href"], "/\\");
    EXPECT_EQ(json["_links"]["self"]["href"], "/a\"\xef\xbf\xbd");
}

} // namespace
} // namespace Sensor::Http
