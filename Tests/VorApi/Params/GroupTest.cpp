#include "VorApi/Params/Group.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Value.h"

#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Params::Group;
using Vor::Params::Value;
using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;

namespace {

// The arguments that create a device.
struct DeviceCreation : Group {
    DeviceCreation() {
        Register("engineId", engineId);
        Register("serialNumber", serialNumber);
        engineId = "";
        serialNumber = "";
    }
    Value<std::string> engineId;
    Value<std::string> serialNumber;
};

struct Counted : Group {
    Counted() {
        Register("a", a, "First", 100);
        Register("b", b, "", 5);
        Register("c", c, "Third", 100);
    }
    Value<unsigned int> a;
    Value<bool> b;
    Value<std::string> c;
};

} // namespace

TEST(GroupTest, MembersAreNumberedInStepsAndTitledByTheirKeyWhenTheTitleIsEmpty) {
    const DeviceCreation group;
    EXPECT_EQ(group.engineId.GetTitle(), "engineId");
    EXPECT_EQ(group.engineId.GetSortOrder(), 0U);
    EXPECT_EQ(group.serialNumber.GetTitle(), "serialNumber");
    EXPECT_EQ(group.serialNumber.GetSortOrder(), 100U);
}

TEST(GroupTest, StepsOtherThanTheUsualCountTheSameWay) {
    const Counted group;
    EXPECT_EQ(group.a.GetTitle(), "First");
    EXPECT_EQ(group.a.GetSortOrder(), 0U);
    EXPECT_EQ(group.b.GetTitle(), "b");
    EXPECT_EQ(group.b.GetSortOrder(), 100U);
    EXPECT_EQ(group.c.GetSortOrder(), 105U);
}

TEST(GroupTest, SchemaIsAnObjectOfItsMembers) {
    const DeviceCreation group;
    EXPECT_EQ(JsonSerializer::SerializeSchema(group), json::parse(R"({
        "type": "object", "title": "", "sortOrder": 0,
        "properties": {
            "engineId": {"type": "string", "title": "engineId", "sortOrder": 0},
            "serialNumber": {"type": "string", "title": "serialNumber", "sortOrder": 100}
        }})"));
    EXPECT_EQ(JsonSerializer::Serialize(group), json::parse(R"({"engineId": "", "serialNumber": ""})"));
}

TEST(GroupTest, ExtendedTypeIsAKeywordOnlyWhenGiven) {
    EXPECT_FALSE(JsonSerializer::SerializeSchema(Group()).contains("extendedType"));
    EXPECT_FALSE(JsonSerializer::SerializeSchema(Group("")).contains("extendedType"));
    EXPECT_EQ(JsonSerializer::SerializeSchema(Group("color")).at("extendedType"), "color");
}

TEST(GroupTest, GroupsAndArraysCanBeMembers) {
    Group outer;
    DeviceCreation inner;
    Vor::Params::Array<DeviceCreation> list;
    outer.Register("inner", inner, "Inner");
    outer.Register("list", list, "List");
    EXPECT_EQ(inner.GetTitle(), "Inner");
    EXPECT_EQ(list.GetTitle(), "List");
    EXPECT_EQ(list.GetSortOrder(), 100U);
    EXPECT_EQ(JsonSerializer::Serialize(outer),
              json::parse(R"({"inner": {"engineId": "", "serialNumber": ""}, "list": []})"));
}

TEST(GroupTest, ALiveGroupRegisteredInATemporaryDocumentTakesItsTitleAndStays) {
    DeviceCreation live;
    live.SetTitle("before");
    {
        Group document;
        Value<std::string> id;
        document.Register("id", id);
        document.Register("parameters", live);
    }
    EXPECT_EQ(live.GetTitle(), "parameters");
    EXPECT_EQ(live.GetSortOrder(), 100U);
    EXPECT_EQ(JsonSerializer::Serialize(live).size(), 2U);
}

TEST(GroupTest, CopyTakesChildrenKeywordsAndTheSortOrderCounter) {
    Counted source;
    source.a = 4;
    source.a.EnableMaximum(true);
    source.a.SetMaximum(9);
    source.SetTitle("source");
    source.SetSortOrder(7);
    source.EnableReadOnly();
    source.SetReadOnly(true);
    source.EnableVisibility(true);
    source.SetVisibility(3);
    source.EnableMeta(true);
    source.SetMeta("m");
    source.EnableDescription(true);
    source.SetDescription("d");

    Counted target;
    target.CopyValues(source);
    EXPECT_EQ(JsonSerializer::Serialize(target), JsonSerializer::Serialize(source));
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(source));

    Group few;
    Value<unsigned int> a;
    few.Register("a", a, "First", 1);
    few.CopyValues(source);
    Value<bool> next;
    few.Register("next", next);
    EXPECT_EQ(a.Get(), 4U);
    EXPECT_EQ(next.GetSortOrder(), 205U);
}

TEST(GroupTest, CopyTakesTheExtendedTypeText) {
    Group target("a");
    const Group source("b");
    target.CopyValues(source);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target).at("extendedType"), "b");
}

TEST(GroupTest, CopyOfAPlainStructureTakesTheChildrenOnly) {
    Counted target;
    target.SetTitle("kept");
    Vor::Properties::Structure source(true);
    Value<unsigned int> a(6);
    source.Register("a", a);
    target.CopyValues(source);
    EXPECT_EQ(target.a.Get(), 6U);
    EXPECT_EQ(target.GetTitle(), "kept");
    EXPECT_FALSE(target.IsReadOnlyEnabled());
}

TEST(GroupTest, CopyOfUsedOntoVisibilityReplacesIt) {
    Group target;
    target.EnableVisibility(true);
    Group source;
    source.EnableUsed();
    target.CopyValues(source);
    EXPECT_EQ(JsonSerializer::SerializeSchema(target), JsonSerializer::SerializeSchema(source));
}

TEST(GroupTest, CopyOfVisibilityOntoUsedFailsAfterTheChildrenWereCopied) {
    Counted target;
    target.EnableUsed();
    Counted source;
    source.EnableVisibility(true);
    source.a = 8;
    EXPECT_FAILURE(target.CopyValues(source), yERROR_PARAMETER, "Used is already enabled, cannot enable visibility.");
    EXPECT_EQ(target.a.Get(), 8U);
}

TEST(GroupTest, ABlockSizedDocumentStaysSmall) {
    // A group of six parameters, without its memory on the heap.
    EXPECT_LE(sizeof(Group), 640U);
    EXPECT_LE(sizeof(Value<std::string>), 680U);
    EXPECT_LE(sizeof(Value<unsigned short>), 640U);
}
