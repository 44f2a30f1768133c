#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/PropertyValue.h"

#include <typeinfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Vor::Properties::JsonSerializer;
using Vor::Properties::Internal::NodeType;

namespace {

/// Fails the test when it is read.
class NoReader : public Vor::Properties::IValueReader {
public:
    bool ReadBool() override { return Refuse(), false; }
    std::uint16_t ReadUInt16() override { return Refuse(), std::uint16_t(0); }
    std::uint32_t ReadUInt32() override { return Refuse(), 0U; }
    std::uint64_t ReadUInt64() override { return Refuse(), 0U; }
    std::int64_t ReadInt64() override { return Refuse(), 0; }
    std::int32_t ReadEnum() override { return Refuse(), 0; }
    const std::string& ReadText() override {
        Refuse();
        return text;
    }
    Vor::Properties::ByteVector ReadBytes() override { return Refuse(), Vor::Properties::ByteVector(); }
    std::vector<std::string> ReadTextList() override { return Refuse(), std::vector<std::string>(); }
    std::vector<std::uint16_t> ReadUInt16List() override { return Refuse(), std::vector<std::uint16_t>(); }
    std::vector<std::int32_t> ReadEnumList() override { return Refuse(), std::vector<std::int32_t>(); }

private:
    static void Refuse() { ADD_FAILURE() << "a value was read"; }

    std::string text;
};

} // namespace

TEST(NodeTypeTest, IsWrittenAsItsText) {
    const NodeType type("integer");
    EXPECT_EQ(JsonSerializer::Serialize(type), "integer");
    EXPECT_EQ(type.Text(), "integer");
}

TEST(NodeTypeTest, IsBornWriteOnlyAndStaysSo) {
    NodeType type("integer");
    EXPECT_TRUE(type.IsWriteOnly());
    type.SetWriteOnly(true);
    EXPECT_TRUE(type.IsWriteOnly());
    EXPECT_TEXTLESS_FAILURE(type.SetWriteOnly(false), yERROR_WRITE_ONLY);
    EXPECT_TRUE(type.IsWriteOnly());
}

TEST(NodeTypeTest, ReadingIsUnimplementedAndValidatingDoesNothing) {
    NodeType type("integer");
    NoReader reader;
    Vor::Event<> updateEnd;
    EXPECT_TEXTLESS_FAILURE(type.ReadValue(reader, updateEnd), yERROR_UNIMPLEMENTED);
    type.ValidateValue(reader);
    EXPECT_EQ(updateEnd.Count(), 0U);
}

TEST(NodeTypeTest, CopyTakesTheTextAndTheKeywordsInCommon) {
    NodeType target("integer");
    NodeType source("string");
    Vor::Properties::Value<bool> targetKeyword;
    Vor::Properties::Value<bool> sourceKeyword(true);
    target.RegisterSchema("used", targetKeyword);
    source.RegisterSchema("used", sourceKeyword);
    target.CopyValues(source);
    EXPECT_EQ(target.Text(), "string");
    EXPECT_TRUE(targetKeyword.Get());
}

TEST(NodeTypeTest, CopyFromAnotherClassIsABadCast) {
    NodeType target("integer");
    const Vor::Properties::Value<bool> other;
    EXPECT_THROW(target.CopyValues(other), std::bad_cast);
    EXPECT_EQ(target.Text(), "integer");
}
