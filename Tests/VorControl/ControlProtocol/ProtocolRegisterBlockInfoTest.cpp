#include "VorControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Tests/VorControl/ControlProtocol/TestBlocks.h"
#include "Vor/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Tests;
using nlohmann::json;
using Vor::Properties::JsonSerializer;

namespace {

RegisterBlockInfoParams Limits(unsigned short least, unsigned short most) {
    auto params = TypeParams("type");
    params.minInstanceCount = least;
    params.maxInstanceCount = most;
    return params;
}

constexpr const char* Categories[] = {"Unknown",
                                      "Control Input",
                                      "Control Output",
                                      "System",
                                      "Scanner",
                                      "Stamp",
                                      "Measurement",
                                      "Image",
                                      "Spots",
                                      "String",
                                      "Profile Point Cloud",
                                      "Uniform Profile",
                                      "Surface Point Cloud",
                                      "Uniform Surface",
                                      "User Data Input"};

} // namespace

TEST(ProtocolRegisterBlockInfo, DocumentHasNineReadOnlyFieldsInOrder) {
    VorGetText::GetInstance().ForgetCalls();
    auto params = TypeParams("kind", 12);
    params.displayName = "shown";
    params.category = RegisterBlockCategory::String;
    params.minInstanceCount = 2;
    params.maxInstanceCount = 5;
    params.hasDataSource = true;
    params.configurableRegisterCount = true;
    const ProtocolRegisterBlockInfo info(std::move(params));

    EXPECT_EQ(JsonSerializer::Serialize(info), (json{{"type", "kind"},
                                                     {"displayName", "shown"},
                                                     {"category", 9},
                                                     {"defaultRegisterCount", 12},
                                                     {"instanceCount", 0},
                                                     {"minInstanceCount", 2},
                                                     {"maxInstanceCount", 5},
                                                     {"hasDataSource", true},
                                                     {"configurableRegisterCount", true}}));
    const std::pair<const char*, const char*> expected[] = {
        {"type", "Type"},
        {"displayName", "Display Name"},
        {"category", "Block Category"},
        {"defaultRegisterCount", "Default Number of Registers"},
        {"instanceCount", "Number of Instances"},
        {"minInstanceCount", "Minimum Number of Instances"},
        {"maxInstanceCount", "Maximum Number of Instances"},
        {"hasDataSource", "Register Block Has Scan Output Data Source"},
        {"configurableRegisterCount", "Register Block's Register Count is Editable."}};
    const auto fields = JsonSerializer::SerializeSchema(info).at("properties");
    int order = 0;
    for (const auto& [key, title] : expected) {
        EXPECT_EQ(info.Members()[static_cast<std::size_t>(order / 100)].Text(), key);
        EXPECT_EQ(fields.at(key).at("title"), title);
        EXPECT_EQ(fields.at(key).at("sortOrder"), order);
        EXPECT_EQ(fields.at(key).at("readOnly"), true);
        EXPECT_TRUE(WasTranslated("beApp.ctrl", title)) << title;
        order += 100;
    }
    EXPECT_EQ(info.Members().size(), 9U);
}

TEST(ProtocolRegisterBlockInfo, CategoriesAreOptionsInOrderOfValue) {
    VorGetText::GetInstance().ForgetCalls();
    const ProtocolRegisterBlockInfo info(TypeParams("type"));
    const auto category = JsonSerializer::SerializeSchema(info).at("properties").at("category");
    EXPECT_EQ(category.at("enum"), (json{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
    EXPECT_EQ(category.at("enumText"), json(Categories));
    for (const char* text : Categories) {
        EXPECT_TRUE(WasTranslated("com.vorlab.ctrl", text)) << text;
    }
}

TEST(ProtocolRegisterBlockInfo, GettersGiveTheParameters) {
    auto params = TypeParams("kind", 12);
    params.category = RegisterBlockCategory::ControlInput;
    params.deserializedInputSize = 67;
    params.bytesPerRegister = 2;
    params.minInstanceCount = 1;
    params.maxInstanceCount = 4;
    params.isProtocolBigEndian = false;
    const ProtocolRegisterBlockInfo info(std::move(params));
    EXPECT_EQ(info.Type(), "kind");
    EXPECT_EQ(info.DisplayName(), "kind name");
    EXPECT_EQ(info.Category(), RegisterBlockCategory::ControlInput);
    EXPECT_EQ(info.DeserializedInputSize(), 67);
    EXPECT_EQ(info.DefaultRegisterCount(), 12);
    EXPECT_EQ(info.BytesPerRegister(), 2);
    EXPECT_EQ(info.MinInstanceCount(), 1);
    EXPECT_EQ(info.MaxInstanceCount(), 4);
    EXPECT_FALSE(info.IsProtocolBigEndian());
    EXPECT_FALSE(info.IsGlobalAddressSpaceUsed());
    EXPECT_FALSE(info.HasDataSource());
    EXPECT_FALSE(info.IsRegisterCountConfigurable());
}

TEST(ProtocolRegisterBlockInfo, MaximumBelowMinimumIsRefused) {
    EXPECT_TEXTLESS_FAILURE(ProtocolRegisterBlockInfo(Limits(2, 1)), yERROR_PARAMETER);
    EXPECT_NO_THROW(ProtocolRegisterBlockInfo(Limits(2, 2)));
}

TEST(ProtocolRegisterBlockInfo, WithoutMinimumTheLastBlockCanGo) {
    ProtocolRegisterBlockInfo info(Limits(0, 2));
    EXPECT_TRUE(info.AtMinInstance());
    info.IncrementInstanceCount();
    EXPECT_FALSE(info.AtMinInstance());
    EXPECT_FALSE(info.AtMaxInstance());
    info.IncrementInstanceCount();
    EXPECT_TRUE(info.AtMaxInstance());
    info.DecrementInstanceCount();
    info.DecrementInstanceCount();
    EXPECT_TRUE(info.AtMinInstance());
}

TEST(ProtocolRegisterBlockInfo, WithMinimumOneTheLastBlockStays) {
    ProtocolRegisterBlockInfo info(Limits(1, 2));
    info.IncrementInstanceCount();
    EXPECT_TRUE(info.AtMinInstance());
    info.IncrementInstanceCount();
    EXPECT_FALSE(info.AtMinInstance());
}

TEST(ProtocolRegisterBlockInfo, InstanceCountWrapsAndResets) {
    ProtocolRegisterBlockInfo info(Limits(0, 65534));
    info.DecrementInstanceCount();
    EXPECT_EQ(JsonSerializer::Serialize(info)["instanceCount"], 65535);
    EXPECT_TRUE(info.AtMaxInstance());
    info.DecrementInstanceCount();
    EXPECT_EQ(JsonSerializer::Serialize(info)["instanceCount"], 65534);
    EXPECT_TRUE(info.AtMaxInstance());
    info.DecrementInstanceCount();
    EXPECT_FALSE(info.AtMaxInstance());
    info.ResetInstanceCount();
    EXPECT_EQ(JsonSerializer::Serialize(info)["instanceCount"], 0);
}

TEST(ProtocolRegisterBlockInfo, ConstructedBlockRefersToItsInformation) {
    ProtocolRegisterBlockInfo info(TypeParams("kind", 3));
    RegisterBlockParams params;
    params.outputId = 9;
    const auto block = info.ConstructBlock(params);
    EXPECT_NE(dynamic_cast<OpenBlock*>(block.get()), nullptr);
    EXPECT_EQ(block->Type(), "kind");
    EXPECT_EQ(block->OutputId(), 9);
    info.SetIsGlobalAddressSpaceUsed(true);
    EXPECT_EQ(block->EndAddress(), 11);
}

TEST(ProtocolRegisterBlockInfo, ConstructionPassesOnWhatTheBlockThrows) {
    ProtocolRegisterBlockInfo info(TypeParams("kind"));
    info.SetIsGlobalAddressSpaceUsed(true);
    EXPECT_FAILURE(info.ConstructBlock(RegisterBlockParams()), yERROR_PARAMETER, "An output id must be specified.");
}

TEST(ProtocolRegisterBlockInfo, SharesTheFactory) {
    auto params = TypeParams("kind");
    const auto factory = params.factory;
    const ProtocolRegisterBlockInfo info(params);
    EXPECT_EQ(factory.use_count(), 3);
}

TEST(ProtocolRegisterBlockInfo, CategoryIsOneByte) {
    EXPECT_EQ(sizeof(RegisterBlockCategory), 1U);
    auto params = TypeParams("kind");
    params.category = RegisterBlockCategory::UserDataInput;
    ProtocolRegisterBlockInfo info(std::move(params));
    EXPECT_EQ(JsonSerializer::Serialize(info).at("category"), 14);
    EXPECT_THROW(JsonSerializer::Deserialize(info.At("category"), 256), Vor::Exception);
    EXPECT_EQ(info.Category(), RegisterBlockCategory::UserDataInput);
}
