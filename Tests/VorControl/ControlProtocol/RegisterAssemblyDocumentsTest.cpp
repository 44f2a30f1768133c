#include "Tests/Support/Translations.h"
#include "Vor/JsonSerializer.h"
#include "VorControl/ControlProtocol/RegisterAssemblyProperties.h"
#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace VorControl::ControlProtocol;
using nlohmann::json;
using Tests::WasTranslated;
using Vor::Properties::JsonSerializer;

namespace {

struct Field {
    const char* key;
    const char* title;
};

void ExpectFields(const Vor::Params::Group& group, std::initializer_list<Field> expected, const json& readOnly) {
    const auto fields = JsonSerializer::SerializeSchema(group).at("properties");
    ASSERT_EQ(group.Members().size(), expected.size());
    std::size_t position = 0;
    for (const auto& [key, title] : expected) {
        EXPECT_EQ(group.Members()[position].Text(), key);
        EXPECT_EQ(fields.at(key).at("title"), title);
        EXPECT_EQ(fields.at(key).at("sortOrder"), position * 100);
        EXPECT_EQ(fields.at(key).value("readOnly", json()), readOnly) << key;
        EXPECT_TRUE(WasTranslated("beApp.ctrl", title)) << title;
        ++position;
    }
}

} // namespace

TEST(RegisterAssemblyDocuments, BlockOfAnAddRequest) {
    VorGetText::GetInstance().ForgetCalls();
    const RegisterBlockParams params;
    EXPECT_EQ(
        JsonSerializer::Serialize(params),
        (json{{"type", ""}, {"dataSource", ""}, {"displayName", ""}, {"outputId", 65535}, {"registerCount", 65535}}));
    ExpectFields(params,
                 {{"type", "Register Block Type"},
                  {"dataSource", "Scan Output Data Source"},
                  {"displayName", "Display Name"},
                  {"outputId", "Output Id"},
                  {"registerCount", "Register Count"}},
                 json());
}

TEST(RegisterAssemblyDocuments, AddRequest) {
    VorGetText::GetInstance().ForgetCalls();
    AddBlockParams params;
    EXPECT_EQ(JsonSerializer::Serialize(params), (json{{"blocks", json::array()}, {"autoShift", false}}));
    ExpectFields(
        params, {{"blocks", "Register Block Parameters List"}, {"autoShift", "Auto Shift Blocks On Output id Overlap"}},
        json());
    JsonSerializer::Deserialize(params, json::parse(R"({"blocks":[{"type":"a","outputId":3}],"autoShift":true})"));
    ASSERT_EQ(params.blocks.Count(), 1U);
    EXPECT_EQ(params.blocks.At(0).type.Get(), "a");
    EXPECT_EQ(params.blocks.At(0).outputId.Get(), 3);
    EXPECT_EQ(params.blocks.At(0).registerCount.Get(), 65535);
}

TEST(RegisterAssemblyDocuments, RemoveRequest) {
    VorGetText::GetInstance().ForgetCalls();
    const RegisterBlockIdParams block;
    EXPECT_EQ(JsonSerializer::Serialize(block), (json{{"outputId", 65535}}));
    ExpectFields(block, {{"outputId", "Output Id"}}, json());
    RemoveBlockParams params;
    EXPECT_EQ(JsonSerializer::Serialize(params), (json{{"outputIdList", json::array()}}));
    ExpectFields(params, {{"outputIdList", "Output Id List"}}, json());
    JsonSerializer::Deserialize(params, json::parse(R"({"outputIdList":[{"outputId":3},{}]})"));
    ASSERT_EQ(params.outputIdList.Count(), 2U);
    EXPECT_EQ(params.outputIdList.At(0).outputId.Get(), 3);
    EXPECT_EQ(params.outputIdList.At(1).outputId.Get(), 65535);
}

TEST(RegisterAssemblyDocuments, NewValuesOfAnUpdate) {
    VorGetText::GetInstance().ForgetCalls();
    const json unchanged = {{"dataSource", ""}, {"displayName", ""}, {"outputId", 65535}, {"registerCount", 65535}};
    UpdateBlockNewParams params;
    EXPECT_EQ(JsonSerializer::Serialize(params), unchanged);
    ExpectFields(params,
                 {{"dataSource", "Data Source"},
                  {"displayName", "Display Name"},
                  {"outputId", "Output Id"},
                  {"registerCount", "Register Count"}},
                 json());
    JsonSerializer::Deserialize(params,
                                json::parse(R"({"dataSource":"a","displayName":"b","outputId":1,"registerCount":2})"));
    EXPECT_NE(JsonSerializer::Serialize(params), unchanged);
    params.Reset();
    EXPECT_EQ(JsonSerializer::Serialize(params), unchanged);
}

TEST(RegisterAssemblyDocuments, UpdateRequest) {
    VorGetText::GetInstance().ForgetCalls();
    UpdateBlockParams params;
    EXPECT_EQ(JsonSerializer::Serialize(params),
              (json{{"outputId", 65535},
                    {"autoShift", false},
                    {"newParams",
                     {{"dataSource", ""}, {"displayName", ""}, {"outputId", 65535}, {"registerCount", 65535}}}}));
    ExpectFields(params,
                 {{"outputId", "Output Id"},
                  {"autoShift", "Auto Shift Blocks On Output id Overlap"},
                  {"newParams", "New Parameters For Output Id"}},
                 json());
    JsonSerializer::Deserialize(params, json::parse(R"({"outputId":3,"newParams":{"outputId":4}})"));
    EXPECT_EQ(params.outputId.Get(), 3);
    EXPECT_EQ(params.newParams.outputId.Get(), 4);
    EXPECT_EQ(params.newParams.registerCount.Get(), 65535);
}

TEST(RegisterAssemblyDocuments, CompactRequest) {
    VorGetText::GetInstance().ForgetCalls();
    const CompactBlocksParams params;
    EXPECT_EQ(JsonSerializer::Serialize(params), (json{{"startingOutputId", 65535}}));
    ExpectFields(params, {{"startingOutputId", "Starting Output Id"}}, json());
}

TEST(RegisterAssemblyDocuments, Attributes) {
    VorGetText::GetInstance().ForgetCalls();
    const RegisterAssemblyAttributes attributes;
    EXPECT_EQ(
        JsonSerializer::Serialize(attributes),
        (json{
            {"isGlobalAddressSpaceUsed", false}, {"outputIdMin", 0}, {"outputIdMax", 0}, {"outputIdReadOnly", false}}));
    ExpectFields(attributes,
                 {{"isGlobalAddressSpaceUsed", "Is Global Address Space Used"},
                  {"outputIdMin", "Minimum Output Id"},
                  {"outputIdMax", "Maximum Output Id"},
                  {"outputIdReadOnly", "Output Id Configurable Or Not"}},
                 true);
}

TEST(RegisterAssemblyDocuments, Properties) {
    VorGetText::GetInstance().ForgetCalls();
    const RegisterAssemblyProperties properties;
    EXPECT_EQ(JsonSerializer::Serialize(properties), (json{{"version", "1.2"}, {"displayName", ""}, {"id", ""}}));
    ExpectFields(properties,
                 {{"version", "Register Assembly Version"},
                  {"displayName", "Register Assembly display name"},
                  {"id", "Register Assembly Identifier"}},
                 true);
}
