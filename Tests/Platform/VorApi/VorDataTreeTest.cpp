#include "VorApi/VorDataTree.h"

#include "Tests/Support/Failure.h"

#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Properties::ByteVector;
using VorApi::VorDataTree;

namespace {

void FillByValue(VorDataTree tree) {
    tree["filled"].Set(true);
}

} // namespace

TEST(VorDataTreeTest, ANewTreeIsNull) {
    const VorDataTree tree;
    EXPECT_TRUE(tree.IsNull());
    EXPECT_EQ(tree.Count(), 0U);
    EXPECT_EQ(tree.Dump(false), "null");
}

TEST(VorDataTreeTest, IsAHandleSoThatACopyFillsTheSameTree) {
    VorDataTree tree;
    FillByValue(tree);
    EXPECT_EQ(tree.Dump(false), R"({"filled":true})");
}

TEST(VorDataTreeTest, MembersAreMadeWhenAccessedAndKeepTheirOrder) {
    VorDataTree tree;
    VorDataTree z = tree["z"];
    for (int i = 0; i < 100; ++i) {
        tree["m" + std::to_string(i)];
    }
    tree["a"].Set("last");
    z.Set(std::int64_t(1));
    EXPECT_EQ(tree["z"].AsInt64(), 1);
    EXPECT_EQ(tree.Count(), 102U);
    EXPECT_EQ(tree.Names().front(), "z");
    EXPECT_EQ(tree.Names().back(), "a");
    EXPECT_TRUE(tree.Contains("m57"));
    EXPECT_TRUE(tree["m57"].IsNull());
}

TEST(VorDataTreeTest, AskingAConstTreeMakesNothing) {
    const VorDataTree tree;
    EXPECT_TRUE(tree["a"]["b"].IsNull());
    EXPECT_EQ(tree["fragment"].Dump(false), "null");
    EXPECT_TRUE(tree.IsNull());
    EXPECT_FALSE(tree.Contains("a"));
}

TEST(VorDataTreeTest, EmptyObjectsAndArraysStayVisible) {
    VorDataTree tree;
    tree["object"].MakeObject();
    tree["array"].MakeArray();
    EXPECT_EQ(tree.Dump(false), R"({"object":{},"array":[]})");
}

TEST(VorDataTreeTest, MakingTheSameKindAgainKeepsTheContentAndAnotherKindDropsIt) {
    VorDataTree tree;
    tree["a"].Set(true);
    tree.MakeObject();
    EXPECT_EQ(tree.Count(), 1U);
    tree.MakeArray();
    EXPECT_EQ(tree.Count(), 0U);
    tree.Append();
    tree.MakeArray();
    EXPECT_EQ(tree.Count(), 1U);
    tree["a"];
    EXPECT_TRUE(tree.IsObject());
    tree.SetNull();
    EXPECT_TRUE(tree.IsNull());
}

TEST(VorDataTreeTest, ElementsAreHandlesToo) {
    VorDataTree tree;
    VorDataTree first = tree.Append();
    for (int i = 0; i < 100; ++i) {
        tree.Append();
    }
    first["n"].Set(std::uint64_t(7));
    EXPECT_EQ(tree.At(0)["n"].AsUInt64(), 7U);
    EXPECT_TEXTLESS_FAILURE(tree.At(101), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(first.At(0), yERROR_NOT_FOUND);
}

TEST(VorDataTreeTest, EachKindOfValueIsGivenBack) {
    VorDataTree tree;
    tree.Set(true);
    EXPECT_EQ(tree.GetKind(), VorDataTree::Kind::Bool);
    EXPECT_TRUE(tree.AsBool());
    tree.Set(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(tree.GetKind(), VorDataTree::Kind::Int64);
    EXPECT_EQ(tree.AsInt64(), std::numeric_limits<std::int64_t>::min());
    tree.Set(std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(tree.GetKind(), VorDataTree::Kind::UInt64);
    EXPECT_EQ(tree.AsUInt64(), std::numeric_limits<std::uint64_t>::max());
    tree.Set(1.5);
    EXPECT_EQ(tree.GetKind(), VorDataTree::Kind::Double);
    EXPECT_EQ(tree.AsDouble(), 1.5);
    tree.Set(std::string("text"));
    EXPECT_EQ(tree.GetKind(), VorDataTree::Kind::Text);
    EXPECT_EQ(tree.AsText(), "text");
    tree.Set(ByteVector("foo", 3));
    EXPECT_EQ(tree.GetKind(), VorDataTree::Kind::Binary);
    EXPECT_EQ(tree.AsBinary().Size(), 3U);
}

TEST(VorDataTreeTest, IntegersAreGivenInBothSignsIfTheyFit) {
    VorDataTree tree;
    tree.Set(std::int64_t(5));
    EXPECT_EQ(tree.AsUInt64(), 5U);
    tree.Set(std::int64_t(-5));
    EXPECT_FAILURE(tree.AsUInt64(), yERROR_PARAMETER, "The data tree holds no integer of this range here.");
    tree.Set(std::uint64_t(5));
    EXPECT_EQ(tree.AsInt64(), 5);
    tree.Set(std::numeric_limits<std::uint64_t>::max());
    EXPECT_FAILURE(tree.AsInt64(), yERROR_PARAMETER, "The data tree holds no integer of this range here.");
}

TEST(VorDataTreeTest, AnotherKindThanRequestedFails) {
    const VorDataTree tree;
    EXPECT_FAILURE(tree.AsBool(), yERROR_PARAMETER, "The data tree holds no boolean here.");
    EXPECT_FAILURE(tree.AsText(), yERROR_PARAMETER, "The data tree holds no text here.");
    EXPECT_FAILURE(tree.AsDouble(), yERROR_PARAMETER, "The data tree holds no real number here.");
    EXPECT_FAILURE(tree.AsBinary(), yERROR_PARAMETER, "The data tree holds no bytes here.");
    EXPECT_FAILURE(tree.AsInt64(), yERROR_PARAMETER, "The data tree holds no integer of this range here.");
}

TEST(VorDataTreeTest, DumpEscapesTextsAndReplacesWrongUtf8) {
    VorDataTree tree;
    tree["a\"b"].Set("line\n\x01");
    tree["c"].Set(std::string("x\xff"));
    EXPECT_EQ(tree.Dump(false), "{\"a\\\"b\":\"line\\n\\u0001\",\"c\":\"x\xef\xbf\xbd\"}");
}

TEST(VorDataTreeTest, DumpCanBeIndented) {
    VorDataTree tree;
    tree["a"].Append().Set(true);
    tree["b"].MakeObject();
    tree["c"].MakeArray();
    EXPECT_EQ(tree.Dump(true), "{\n    \"a\": [\n        true\n    ],\n    \"b\": {},\n    \"c\": []\n}");
    EXPECT_EQ(json::parse(tree.Dump(true)), tree.ToJson());
}

TEST(VorDataTreeTest, JsonBothWays) {
    const json source =
        json::parse(R"({"a":[1,-2,18446744073709551615,1.5,true,null,"t",{}],"b":{"c":[]},"empty":{}})");
    const VorDataTree tree = VorDataTree::FromJson(source);
    EXPECT_EQ(tree.ToJson(), source);
    EXPECT_EQ(json::parse(tree.Dump(false)), source);
}
