#include "Vor/Node.h"

#include "Vor/JsonSerializer.h"
#include "Vor/Structure.h"
#include "VorApi/Params/PropertyValue.h"

#include <memory>
#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;
using Vor::Properties::Structure;
using Vor::Properties::Value;

namespace {

std::vector<std::string> KeysOf(const Structure& structure) {
    std::vector<std::string> keys;
    for (const auto& member : structure.Members()) {
        keys.push_back(member.Text());
    }
    return keys;
}

} // namespace

TEST(NodeTest, IsReadFromDocumentsUnlessMarkedWriteOnly) {
    Value<bool> node;
    EXPECT_FALSE(node.IsWriteOnly());
    node.SetWriteOnly(true);
    EXPECT_TRUE(node.IsWriteOnly());
    node.SetWriteOnly(false);
    EXPECT_FALSE(node.IsWriteOnly());
}

TEST(NodeTest, SchemaKeepsTheOrderOfRegistration) {
    Structure node(true);
    Value<bool> z;
    Value<bool> a;
    Value<bool> m;
    node.RegisterSchema("z", z);
    node.RegisterSchema("a", a, false);
    node.RegisterSchema("m", m, true);
    EXPECT_EQ(KeysOf(node.Schema()), (std::vector<std::string>{"z", "a", "m"}));
    EXPECT_EQ(&node.Schema().At("a"), &a);
    EXPECT_EQ(node.Schema().SchemaOwner(), &node);
}

TEST(NodeTest, RegisteringAKeyAgainReplacesItsNodeInPlace) {
    Structure node(true);
    Value<bool> first;
    Value<bool> second;
    Value<bool> other;
    node.RegisterSchema("a", first);
    node.RegisterSchema("b", other);
    node.RegisterSchema("a", second);
    EXPECT_EQ(KeysOf(node.Schema()), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(&node.Schema().At("a"), &second);
}

TEST(NodeTest, DeregisteringAnUnknownKeyIsTolerated) {
    Structure node(true);
    node.DeregisterSchema("a");
    EXPECT_TRUE(node.Schema().Members().empty());
    Value<bool> a;
    node.RegisterSchema("a", a);
    node.DeregisterSchema("b");
    node.DeregisterSchema("a");
    node.DeregisterSchema("a");
    EXPECT_TRUE(node.Schema().Members().empty());
}

TEST(NodeTest, SchemaRefersToKeywordsWithoutOwningThem) {
    Structure node(true);
    auto keyword = std::make_unique<Value<bool>>();
    node.RegisterSchema("a", *keyword);
    node.DeregisterSchema("a");
    keyword.reset();
    EXPECT_EQ(JsonSerializer::SerializeSchema(node), json::parse(R"({"type":"object","properties":{}})"));
}

TEST(NodeTest, TypeIsAnOrdinaryKeywordWhereverItsNodeLies) {
    const auto far = std::make_unique<Vor::Properties::Internal::NodeType>("far");
    Value<bool> node;
    EXPECT_EQ(JsonSerializer::SerializeSchema(node), json({{"type", "boolean"}}));
    node.RegisterSchema("type", *far);
    EXPECT_EQ(JsonSerializer::SerializeSchema(node), json({{"type", "far"}}));
    EXPECT_EQ(KeysOf(node.Schema()), (std::vector<std::string>{"type"}));
    node.DeregisterSchema("type");
    EXPECT_EQ(JsonSerializer::SerializeSchema(node), json::object());
}

TEST(NodeTest, ALoneTypeCanBeDeregistered) {
    Value<bool> node;
    node.DeregisterSchema("type");
    EXPECT_EQ(JsonSerializer::SerializeSchema(node), json::object());
    EXPECT_TRUE(node.Schema().Members().empty());
}

TEST(NodeTest, CopySchemaCopiesCopiedKeywordsOfBothSides) {
    Structure target(true);
    Structure source(true);
    Value<unsigned int> both(1);
    Value<unsigned int> notCopied(1);
    Value<unsigned int> onlyHere(1);
    Value<unsigned int> sourceBoth(2);
    Value<unsigned int> sourceNotCopied(2);
    Value<unsigned int> onlyThere(2);
    target.RegisterSchema("both", both);
    target.RegisterSchema("notCopied", notCopied, false);
    target.RegisterSchema("onlyHere", onlyHere);
    source.RegisterSchema("onlyThere", onlyThere);
    source.RegisterSchema("notCopied", sourceNotCopied);
    source.RegisterSchema("both", sourceBoth, false);
    target.CopySchema(source);
    EXPECT_EQ(both.Get(), 2U);
    EXPECT_EQ(notCopied.Get(), 1U);
    EXPECT_EQ(onlyHere.Get(), 1U);
    EXPECT_EQ(KeysOf(target.Schema()), (std::vector<std::string>{"both", "notCopied", "onlyHere"}));
}

TEST(NodeTest, CopySchemaFailsForKeywordsOfDifferentKinds) {
    Structure target(true);
    Structure source(true);
    Value<unsigned int> number;
    Value<std::string> text;
    target.RegisterSchema("a", number);
    source.RegisterSchema("a", text);
    EXPECT_THROW(target.CopySchema(source), std::bad_cast);
}

TEST(NodeTest, ANodeWithoutHandlersOrFurtherKeywordsStaysSmall) {
    EXPECT_LE(sizeof(Node), 24U);
    Value<bool> node;
    EXPECT_EQ(node.SchemaIfBuilt(), nullptr);
    EXPECT_NE(node.LoneType(), nullptr);
    node.AddChangeHandler([](Node&) {});
    EXPECT_EQ(node.SchemaIfBuilt(), nullptr);
    node.Schema();
    EXPECT_NE(node.SchemaIfBuilt(), nullptr);
    EXPECT_EQ(node.LoneType(), nullptr);
}

TEST(NodeTest, ParametersStaySmall) {
    EXPECT_LE(sizeof(Value<unsigned short>), 160U);
    EXPECT_LE(sizeof(Structure), 64U);
}
