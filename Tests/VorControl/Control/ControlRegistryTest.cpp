#include "VorControl/Control/ControlRegistry.h"

#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yStatus.h"

#include <gtest/gtest.h>

using Tests::TestPlugin;
using VorControl::ControlInfo;
using VorControl::ControlRegistry;
using VorPlugin::PluginEvent;

namespace {

std::vector<std::string> Names(const ControlRegistry& registry) {
    std::vector<std::string> names;
    for (const ControlInfo* info : registry.List()) {
        names.push_back(info->TypeName());
    }
    return names;
}

const VorPlugin::PluginLib& Publish(VorPlugin::PluginManager& plugins, const std::vector<std::string>& types) {
    TestPlugin plugin;
    for (const std::string& type : types) {
        plugin.Add(TestPlugin::Info(type), [](const auto&) { return nullptr; });
    }
    return plugin.Publish(plugins);
}

class OtherPlugin : public VorPlugin::IPlugin {
public:
    const char* Type() const override { return "Something.Else"; }
    void* GetObject() const override { return nullptr; }
};

yStatus StatusWithoutText(const std::function<void()>& call) {
    try {
        call();
    } catch (const Vor::Exception& e) {
        EXPECT_FALSE(e.HasText());
        return e.Status();
    }
    return yOK;
}

class ControlRegistryTest : public testing::Test {
protected:
    VorPlugin::PluginManager plugins;
    Vor::LogCapture log;
};

TEST_F(ControlRegistryTest, IsEmptyWithoutPlugins) {
    const ControlRegistry registry(plugins);
    EXPECT_TRUE(registry.List().empty());
    EXPECT_EQ(registry.FindByTypeName("anything"), nullptr);
    EXPECT_TRUE(log.Contains(Vor::LevelInfo, "ControlRegistry loading plugins..."));
}

TEST_F(ControlRegistryTest, TakesInWhatIsLoadedBeforeAndAfterItsConstruction) {
    Publish(plugins, {"zebra", "bear"});
    const ControlRegistry registry(plugins);
    EXPECT_EQ(Names(registry), (std::vector<std::string>{"bear", "zebra"}));
    Publish(plugins, {"cat"});
    EXPECT_EQ(Names(registry), (std::vector<std::string>{"bear", "cat", "zebra"}));
}

TEST_F(ControlRegistryTest, ListsByBytesOfTheTypeName) {
    Publish(plugins, {"b", "B", "\xC3\xA4", "a"});
    const ControlRegistry registry(plugins);
    EXPECT_EQ(Names(registry), (std::vector<std::string>{"B", "a", "b", "\xC3\xA4"}));
}

TEST_F(ControlRegistryTest, AnUnloadedLibraryLosesItsTypesAndNoOther) {
    Publish(plugins, {"stays"});
    const auto& lib = Publish(plugins, {"goes", "too"});
    const ControlRegistry registry(plugins);
    plugins.Unload(lib);
    EXPECT_EQ(Names(registry), std::vector<std::string>{"stays"});
}

TEST_F(ControlRegistryTest, ARecordCanBeReadAfterItsRemoval) {
    const auto& lib = Publish(plugins, {"gone"});
    const ControlRegistry registry(plugins);
    const ControlInfo* const info = registry.FindByTypeName("gone");
    ASSERT_NE(info, nullptr);
    plugins.Unload(lib);
    EXPECT_EQ(registry.FindByTypeName("gone"), nullptr);
    EXPECT_EQ(info->DisplayName(), "gone service");
}

TEST_F(ControlRegistryTest, APluginWithoutRecordsAndALibraryOfAnotherKindAddNothing) {
    Publish(plugins, {});
    auto lib = std::make_unique<VorPlugin::PluginLib>("");
    lib->Add(std::make_shared<OtherPlugin>());
    plugins.Add(std::move(lib));
    const ControlRegistry registry(plugins);
    EXPECT_TRUE(registry.List().empty());
    EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
}

TEST_F(ControlRegistryTest, ATakenTypeNameLosesOnlyThatRecord) {
    Publish(plugins, {"a", "b"});
    Publish(plugins, {"b", "c"});
    const ControlRegistry registry(plugins);
    EXPECT_EQ(Names(registry), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(log.Count(Vor::LevelError, "Failed to add control service \"b service\" ()"), 1U);
    EXPECT_GT(log.CountLevel(Vor::LevelError), 1U);
}

TEST_F(ControlRegistryTest, RemovalOfARecordThatFailedAtItsAddIsLoggedAndTheOthersGo) {
    VorPlugin::PluginManager other;
    const auto& lib = Publish(other, {"a", "b"});
    ControlRegistry registry(plugins);
    registry.Add(TestPlugin::Info("b"));
    registry.ProcessPluginLoad(lib, PluginEvent::Unloading);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Failed to remove control service \"a service\" ()"));
    EXPECT_TRUE(registry.List().empty());
}

TEST_F(ControlRegistryTest, AnotherEventDoesNothing) {
    VorPlugin::PluginManager other;
    const auto& lib = Publish(other, {"a"});
    ControlRegistry registry(plugins);
    registry.ProcessPluginLoad(lib, static_cast<PluginEvent>(2));
    EXPECT_TRUE(registry.List().empty());
}

TEST_F(ControlRegistryTest, AddOfATakenNameFailsAndChangesNothing) {
    ControlRegistry registry(plugins);
    registry.Add(TestPlugin::Info("a").SetDescription("first"));
    EXPECT_EQ(StatusWithoutText([&] { registry.Add(TestPlugin::Info("a").SetDescription("second")); }),
              yERROR_ALREADY_EXISTS);
    EXPECT_EQ(registry.FindByTypeName("a")->Description(), "first");
}

TEST_F(ControlRegistryTest, RemoveOfAnUnknownNameFails) {
    ControlRegistry registry(plugins);
    EXPECT_EQ(StatusWithoutText([&] { registry.Remove("a"); }), yERROR_NOT_FOUND);
}

TEST_F(ControlRegistryTest, ItsCopyDoesntFollowTheRecordButSharesTheFactory) {
    Tests::TestFactory factory([](const auto&) { return nullptr; });
    ControlInfo info = TestPlugin::Info("a");
    info.SetFactory(factory);
    info.SetIcon("icon", {1, 2, 3}).AddCategory("category").SetHelpUrl("url");
    ControlRegistry registry(plugins);
    registry.Add(info);
    info.SetDisplayName("changed").AddCategory("second");
    const ControlInfo& copy = *registry.FindByTypeName("a");
    EXPECT_EQ(copy.DisplayName(), "a service");
    EXPECT_EQ(copy.CategoryCount(), 1U);
    EXPECT_EQ(copy.HelpUrl(), "url");
    EXPECT_EQ(copy.Icon().bytes, (std::vector<unsigned char>{1, 2, 3}));
    EXPECT_EQ(&copy.Factory(), &factory);
}

TEST_F(ControlRegistryTest, HearsNothingAfterDetachingOrItsEnd) {
    {
        ControlRegistry registry(plugins);
        EXPECT_EQ(plugins.LoadEvent().Count(), 1U);
        registry.DetachPlugins();
        EXPECT_EQ(plugins.LoadEvent().Count(), 0U);
        Publish(plugins, {"late"});
        EXPECT_TRUE(registry.List().empty());
        registry.DetachPlugins();
    }
    {
        const ControlRegistry registry(plugins);
        EXPECT_EQ(plugins.LoadEvent().Count(), 1U);
    }
    EXPECT_EQ(plugins.LoadEvent().Count(), 0U);
}

TEST_F(ControlRegistryTest, ASecondAttachReplacesTheSubscription) {
    {
        ControlRegistry registry(plugins);
        registry.AttachPlugins();
        EXPECT_EQ(plugins.LoadEvent().Count(), 1U);
        Publish(plugins, {"late"});
        EXPECT_EQ(Names(registry), std::vector<std::string>{"late"});
        EXPECT_EQ(log.CountLevel(Vor::LevelError), 0U);
    }
    EXPECT_EQ(plugins.LoadEvent().Count(), 0U);
}

} // namespace
