#include "VorApi/VorDataTree.h"

#include "Tests/Support/Failure.h"

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Vor::Properties::ByteVector;
using VorApi::VorDataTree;

namespace {

void FillByValue(VorDataTree tree) {
    tree["filled"].Set(true);
}

/// Builds the same random document as a data tree and with nlohmann/json.
class RandomDocuments {
public:
    explicit RandomDocuments(unsigned seed)
        : random(seed) {}

    void Fill(const VorDataTree& tree, nlohmann::ordered_json& json, int depth) {
        VorDataTree node = tree;
        node.SetNull(); // of a name that has come before
        switch (Below(depth == 0 ? 7 : 9)) {
        case 0:
            json = nullptr;
            return node.SetNull();
        case 1:
            json = Below(2) == 0;
            return node.Set(json.get<bool>());
        case 2:
            json = static_cast<std::int64_t>(Bits());
            return node.Set(json.get<std::int64_t>());
        case 3:
            json = std::uint64_t{Bits()};
            return node.Set(json.get<std::uint64_t>());
        case 4:
            json = Double();
            return node.Set(json.get<double>());
        case 5:
            json = Text();
            return node.Set(json.get<std::string>());
        case 6: {
            const std::string bytes = Text();
            const ByteVector value(bytes.data(), bytes.size());
            json = value.ToBase64();
            return node.Set(value);
        }
        case 7:
            json = nlohmann::ordered_json::array();
            node.MakeArray();
            for (std::size_t count = Below(8); count > 0; --count) {
                json.push_back(nullptr);
                Fill(node.Append(), json.back(), depth - 1);
            }
            return;
        default:
            json = nlohmann::ordered_json::object();
            node.MakeObject();
            for (std::size_t count = Below(2) == 0 ? Below(8) : Below(80); count > 0; --count) {
                const std::string name = Text();
                Fill(node[name], json[name], depth - 1);
            }
        }
    }

private:
    std::size_t Below(std::size_t limit) { return random() % limit; }
    std::uint64_t Bits() { return random() >> Below(64); }

    double Double() {
        const std::array<double, 8> special = {
            0.0, -0.0, 1e300, 5e-324, 100.0, std::numeric_limits<double>::infinity(), std::nan(""), 1.0 / 3};
        return Below(2) == 0 ? special.at(Below(special.size())) : std::ldexp(static_cast<double>(Bits()), -32);
    }

    /// Of pieces that JSON has as they are, escaped or replaced, cut anywhere.
    std::string Text() {
        const std::array<std::string, 12> pieces = {
            "a", "name", "\"", "\\", "\n", "\x01", "\x7f", "/", "\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80", "\xff"};
        std::string text;
        for (std::size_t count = Below(6); count > 0; --count) {
            text += pieces.at(Below(3) == 0 ? Below(pieces.size()) : Below(2));
        }
        return Below(8) == 0 ? text.substr(0, text.size() / 2) : text;
    }

    std::mt19937_64 random;
};

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

TEST(VorDataTreeTest, ManyMembersAndElementsAreFound) {
    VorDataTree tree;
    for (int i = 0; i < 5000; ++i) {
        const std::string number = std::to_string(i);
        tree["object"][number]["nested"].Set(std::int64_t(i));
        tree["array"].Append().Append().Set(std::int64_t(i));
        tree["flat"].Append().Set(std::int64_t(i));
    }
    const std::vector<std::string> names = tree["object"].Names();
    ASSERT_EQ(names.size(), 5000U);
    EXPECT_EQ(tree["object"].Count(), 5000U);
    for (int i = 0; i < 5000; ++i) {
        const auto at = static_cast<std::size_t>(i);
        EXPECT_EQ(names[at], std::to_string(i));
        EXPECT_EQ(tree["object"][names[at]]["nested"].AsInt64(), i);
        EXPECT_EQ(tree["array"].At(at).At(0).AsInt64(), i);
        EXPECT_EQ(tree["flat"].At(at).AsInt64(), i);
    }
    EXPECT_FALSE(tree["object"].Contains("5000"));
    EXPECT_FALSE(tree["object"].Contains("nested"));
}

TEST(VorDataTreeTest, WhatIsReplacedIsGoneFromTheTreeAndStaysWithItsHandles) {
    VorDataTree tree;
    for (int i = 0; i < 100; ++i) {
        tree["o"]["m" + std::to_string(i)].Set(std::int64_t(i));
    }
    VorDataTree last = tree["o"]["m99"];
    VorDataTree object = tree["o"];
    object.SetNull();
    object.MakeObject();
    EXPECT_EQ(tree.Dump(false), R"({"o":{}})");
    for (int i = 0; i < 50; ++i) {
        object["n" + std::to_string(i)];
    }
    EXPECT_FALSE(object.Contains("m99"));
    EXPECT_TRUE(object.Contains("n49"));
    tree = VorDataTree();
    object = VorDataTree();
    last["inside"].Set("text");
    EXPECT_EQ(last.Dump(false), R"({"inside":"text"})");
}

TEST(VorDataTreeTest, IsReleasedHoweverDeepItIs) {
    VorDataTree tree;
    VorDataTree deepest = tree;
    for (int i = 0; i < 1'000'000; ++i) {
        deepest = i % 2 == 0 ? deepest["a"] : deepest.Append();
    }
    deepest.Set("bottom");
    EXPECT_TRUE(tree["a"].At(0).Contains("a"));
    tree = VorDataTree();
    EXPECT_EQ(deepest.AsText(), "bottom");
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

TEST(VorDataTreeTest, ItsTextCanBeAppended) {
    VorDataTree tree;
    tree["a"].Set(1.5);
    std::string text = "x";
    tree.AppendTo(text, false);
    EXPECT_EQ(text, R"(x{"a":1.5})");
}

TEST(VorDataTreeTest, ItsSizeIsAboutThatOfItsContent) {
    VorDataTree tree;
    EXPECT_LT(tree.Size(), 1000U);
    for (int i = 0; i < 10'000; ++i) {
        tree.Append().Set("a text of twenty-four bytes");
    }
    EXPECT_GT(tree.Size(), 10'000U * 24U);
    EXPECT_LT(tree.Size(), 10'000U * 250U);
    EXPECT_EQ(tree.At(0).Size(), tree.Size());
}

TEST(VorDataTreeTest, DumpEscapesTextsAndReplacesWrongUtf8) {
    VorDataTree tree;
    tree["a\"b"].Set("line\n\x01");
    tree["c"].Set(std::string("x\xff"));
    EXPECT_EQ(tree.Dump(false), "{\"a\\\"b\":\"line\\n\\u0001\",\"c\":\"x\xef\xbf\xbd\"}");
}

TEST(VorDataTreeTest, DumpGivesTheTextOfNlohmann) {
    RandomDocuments documents(1);
    for (int i = 0; i < 2000; ++i) {
        VorDataTree tree;
        nlohmann::ordered_json json;
        documents.Fill(tree, json, i % 5);
        const auto replace = nlohmann::ordered_json::error_handler_t::replace;
        ASSERT_TRUE(tree.Dump(false) == json.dump(-1, ' ', false, replace)) << "document " << i;
        ASSERT_TRUE(tree.Dump(true) == json.dump(4, ' ', false, replace)) << "document " << i;
    }
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
