#include "Vor/VorDataTreeSerializer.h"

#include "Vor/JsonSerializer.h"
#include "VorApi/Params/Array.h"
#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorApi/VorDataTree.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Vor::Params::Array;
using Vor::Params::Enum;
using Vor::Params::Group;
using Vor::Properties::ByteVector;
using Vor::Properties::JsonSerializer;
using Vor::Properties::VorDataTreeSerializer;
using VorApi::VorDataTree;

namespace {

enum class Mode { Unknown = -1, Off = 0 };

struct Item : Group {
    Item() { Register("n", n); }
    Vor::Params::Value<unsigned short> n;
};

struct Document : Group {
    Document() {
        Register("zeta", text);
        Register("alpha", number);
        Register("large", large);
        Register("flag", flag);
        Register("bytes", bytes);
        Register("texts", texts);
        Register("numbers", numbers);
        Register("mode", mode);
        Register("items", items);
        text = "t";
        number = -5;
        large = 18446744073709551615ULL;
        bytes = ByteVector("foo", 3);
        texts = std::vector<std::string>{"a", "b"};
        numbers = std::vector<unsigned short>{1, 2};
        mode = Mode::Unknown;
        mode.AddOption(Mode::Unknown, "Unknown");
        items.Resize(2);
    }
    Vor::Params::Value<std::string> text;
    Vor::Params::Value<long long> number;
    Vor::Params::Value<unsigned long long> large;
    Vor::Params::Value<bool> flag;
    Vor::Params::Value<ByteVector> bytes;
    Vor::Params::Value<std::vector<std::string>> texts;
    Vor::Params::Value<std::vector<unsigned short>> numbers;
    Enum<Mode> mode;
    Array<Item> items;
};

} // namespace

TEST(VorDataTreeSerializerTest, WritesTheValuesInTheOrderOfRegistration) {
    VorDataTree tree;
    VorDataTreeSerializer::Serialize(Document(), tree);
    EXPECT_EQ(tree.Dump(false), R"({"zeta":"t","alpha":-5,"large":18446744073709551615,"flag":false,"bytes":"Zm9v",)"
                                R"("texts":["a","b"],"numbers":[1,2],"mode":-1,"items":[{"n":0},{"n":0}]})");
}

TEST(VorDataTreeSerializerTest, WritesTheSameAsJson) {
    const Document document;
    VorDataTree values;
    VorDataTree schema;
    VorDataTreeSerializer::Serialize(document, values);
    VorDataTreeSerializer::SerializeSchema(document, schema);
    EXPECT_EQ(values.ToJson(), JsonSerializer::Serialize(document));
    EXPECT_EQ(schema.ToJson(), JsonSerializer::SerializeSchema(document));
}

TEST(VorDataTreeSerializerTest, BytesStayBytesInTheTree) {
    VorDataTree tree;
    VorDataTreeSerializer::Serialize(Document(), tree);
    EXPECT_EQ(tree["bytes"].GetKind(), VorDataTree::Kind::Binary);
    EXPECT_EQ(tree["bytes"].AsBinary(), ByteVector("foo", 3));
}

TEST(VorDataTreeSerializerTest, ValuesAreMergedIntoWhatIsThere) {
    VorDataTree tree;
    tree["id"].Set("x");
    tree["alpha"].Set("old");
    tree["items"].Append();
    tree["items"].Append();
    tree["items"].Append();
    VorDataTreeSerializer::Serialize(Document(), tree);
    EXPECT_EQ(tree["id"].AsText(), "x");
    EXPECT_EQ(tree["alpha"].AsInt64(), -5);
    EXPECT_EQ(tree["items"].Count(), 2U);
}

TEST(VorDataTreeSerializerTest, TwoSchemasInOnePlaceAreMerged) {
    Group first;
    Group second;
    Vor::Params::Value<bool> a;
    Vor::Params::Value<long long> b;
    first.Register("a", a);
    second.Register("b", b);
    second.SetTitle("second");
    VorDataTree tree;
    VorDataTreeSerializer::SerializeSchema(first, tree["_schema"]);
    VorDataTreeSerializer::SerializeSchema(second, tree["_schema"]);
    VorDataTreeSerializer::SerializeSchema(second, tree["_schema"]);
    EXPECT_EQ(tree["_schema"].Dump(false),
              R"({"type":"object","properties":{"a":{"type":"boolean","title":"a","sortOrder":0},)"
              R"("b":{"type":"integer","title":"b","sortOrder":0}},"title":"second","sortOrder":0})");
}

TEST(VorDataTreeSerializerTest, AShorterArrayReplacesTheItemsOfALongerOne) {
    Array<Item> array;
    array.Resize(3);
    VorDataTree tree;
    VorDataTreeSerializer::SerializeSchema(array, tree);
    array.Resize(1);
    VorDataTreeSerializer::SerializeSchema(array, tree);
    EXPECT_EQ(tree["items"].Count(), 1U);
}
