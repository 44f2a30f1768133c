#include "VorApi/Params/Array.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Params::Array;
using Vor::Properties::JsonSerializer;

namespace {

struct Item : Vor::Params::Group {
    Item() { Register("n", n); }
    Vor::Params::Value<long long> n;
};

} // namespace

TEST(ArrayTest, SchemaHasTitleSortOrderAndOneItemAnElement) {
    Array<Item> array;
    array.Resize(1);
    EXPECT_EQ(JsonSerializer::SerializeSchema(array), json::parse(R"({
        "type": "array", "title": "", "sortOrder": 0,
        "items": [{"type": "object", "title": "", "sortOrder": 0,
                   "properties": {"n": {"type": "integer", "title": "n", "sortOrder": 0}}}]})"));
}

TEST(ArrayTest, ExtendedTypeIsAKeywordOnlyWhenGiven) {
    EXPECT_FALSE(JsonSerializer::SerializeSchema(Array<Item>()).contains("extendedType"));
    EXPECT_EQ(JsonSerializer::SerializeSchema(Array<Item>("list")).at("extendedType"), "list");
}

TEST(ArrayTest, MinItemsAndMaxItemsStartAtTheirExtremes) {
    Array<Item> array;
    array.EnableMinItems(true);
    array.EnableMaxItems(true);
    EXPECT_EQ(array.GetMinItems(), 0U);
    EXPECT_EQ(array.GetMaxItems(), 4294967295U);
    EXPECT_EQ(JsonSerializer::SerializeSchema(array).at("minItems"), 0);
    EXPECT_EQ(JsonSerializer::SerializeSchema(array).at("maxItems"), 4294967295U);
    array.SetMinItems(1);
    array.SetMaxItems(2);
    array.EnableMaxItems(true);
    EXPECT_EQ(array.GetMinItems(), 1U);
    EXPECT_EQ(array.GetMaxItems(), 2U);
    array.EnableMinItems(false);
    array.EnableMaxItems(false);
    EXPECT_FALSE(JsonSerializer::SerializeSchema(array).contains("minItems"));
    EXPECT_FALSE(JsonSerializer::SerializeSchema(array).contains("maxItems"));
    array.EnableMaxItems(true);
    EXPECT_EQ(array.GetMaxItems(), 4294967295U);
}

TEST(ArrayTest, AccessToADisabledKeywordFails) {
    Array<Item> array;
    EXPECT_FAILURE(array.GetMinItems(), yERROR_PARAMETER, "Must enable 'minItems' before using it.");
    EXPECT_FAILURE(array.GetMaxItems(), yERROR_PARAMETER, "Must enable 'maxItems' before using it.");
    EXPECT_FAILURE(array.SetMinItems(1), yERROR_PARAMETER, "Must enable 'minItems' before setting the value.");
    EXPECT_FAILURE(array.SetMaxItems(1), yERROR_PARAMETER, "Must enable 'maxItems' before setting the value.");
}

TEST(ArrayTest, TheNumberOfItemsIsNotEnforced) {
    Array<Item> array;
    array.EnableMaxItems(true);
    array.SetMaxItems(1);
    array.Resize(3);
    std::vector<std::string> errors;
    array.CheckValidationAndCollect(errors, 0);
    EXPECT_TRUE(errors.empty());
    JsonSerializer::Validate(array, json::parse("[{},{},{},{}]"));
    JsonSerializer::Deserialize(array, json::parse("[{},{},{},{}]"));
    EXPECT_EQ(array.Count(), 4U);
}

TEST(ArrayTest, CopyMakesElementsAndSchemaEqual) {
    Array<Item> source("list");
    source.Resize(2);
    source.At(1).n = 4;
    source.At(1).n.EnableMaximum(true);
    source.SetTitle("source");
    source.EnableReadOnly();
    source.EnableUsed();
    source.EnableMeta(true);
    source.EnableDescription(true);
    source.SetDescription("d");
    source.EnableMaxItems(true);
    source.SetMaxItems(7);
    Array<Item> target("other");
    target.EnableMinItems(true);
    target.CopyValues(source);
    EXPECT_EQ(JsonSerializer::Serialize(target), JsonSerializer::Serialize(source));
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(source));
}

TEST(ArrayTest, CopyOfAPlainArrayTakesTheElementsOnly) {
    Array<Item> target;
    target.SetTitle("kept");
    target.EnableMinItems(true);
    Vor::Properties::Array<Item> source;
    source.Resize(2);
    target.CopyValues(source);
    EXPECT_EQ(target.Count(), 2U);
    EXPECT_EQ(target.GetTitle(), "kept");
    EXPECT_TRUE(target.IsMinItemsEnabled());
}

TEST(ArrayTest, CopyOfVisibilityOntoUsedFailsAfterTheElementsWereCopied) {
    Array<Item> target;
    target.EnableUsed();
    Array<Item> source;
    source.EnableVisibility(true);
    source.Resize(2);
    EXPECT_FAILURE(target.CopyValues(source), yERROR_PARAMETER, "Used is already enabled, cannot enable visibility.");
    EXPECT_EQ(target.Count(), 2U);
}
