#include "VorControl/Control/ControlPlugin.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/TestService.h"
#include "yApi/yStatus.h"

#include <stdexcept>

#include <gtest/gtest.h>

using VorControl::ControlInfo;
using VorControl::ControlPlugin;

namespace {

std::shared_ptr<Tests::TestFactory> MakeFactory() {
    return std::make_shared<Tests::TestFactory>([](const auto&) { return nullptr; });
}

TEST(ControlPluginTest, NamesTheContractAndGivesItself) {
    const auto plugin = ControlPlugin::Create();
    EXPECT_STREQ(plugin->Type(), "VorControl.ControlPlugin");
    const VorPlugin::IPlugin& published = *plugin;
    EXPECT_EQ(static_cast<ControlPlugin*>(published.GetObject()), plugin.get());
}

TEST(ControlPluginTest, ListsRecordsInOrderOfAdding) {
    const auto plugin = ControlPlugin::Create();
    EXPECT_EQ(plugin->ControlInfoCount(), 0U);
    plugin->Add(ControlInfo().SetTypeName("zebra"), MakeFactory());
    plugin->Add(ControlInfo().SetTypeName("ant"), MakeFactory());
    ASSERT_EQ(plugin->ControlInfoCount(), 2U);
    EXPECT_EQ(plugin->ControlInfoAt(0).TypeName(), "zebra");
    EXPECT_EQ(plugin->ControlInfoAt(1).TypeName(), "ant");
}

TEST(ControlPluginTest, AnIndexAtTheCountIsOutOfRange) {
    const auto plugin = ControlPlugin::Create();
    EXPECT_THROW(plugin->ControlInfoAt(0), std::out_of_range);
    plugin->Add(ControlInfo(), MakeFactory());
    EXPECT_NO_THROW(plugin->ControlInfoAt(0));
    EXPECT_THROW(plugin->ControlInfoAt(1), std::out_of_range);
}

TEST(ControlPluginTest, SetsTheFactoryOfTheRecordAndKeepsItAlive) {
    auto plugin = ControlPlugin::Create();
    auto factory = MakeFactory();
    const std::weak_ptr<Tests::TestFactory> watched = factory;
    plugin->Add(ControlInfo(), factory);
    EXPECT_EQ(&plugin->ControlInfoAt(0).Factory(), factory.get());
    factory.reset();
    EXPECT_FALSE(watched.expired());
    plugin.reset();
    EXPECT_TRUE(watched.expired());
}

TEST(ControlPluginTest, ARecordWithoutFactoryStaysWithoutOne) {
    const auto plugin = ControlPlugin::Create();
    plugin->Add(ControlInfo(), nullptr);
    EXPECT_TEXTLESS_FAILURE(plugin->ControlInfoAt(0).Factory(), yERROR_STATE);
}

} // namespace
