#include "VorPlugin/PluginManager.h"

#include "Tests/Support/BuildFolders.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yAssembly.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using VorPlugin::PluginEvent;
using VorPlugin::PluginLib;
using VorPlugin::PluginManager;

namespace {

namespace fs = std::filesystem;

fs::path Fixture(const std::string& name) {
    return Tests::BuiltFile("test-plugins/" + name + ".so");
}

/// A folder with copies of fixtures, under names of their own.
class PluginManagerTest : public testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() / ("vor-plugins-" + std::to_string(getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    fs::path Copy(const std::string& fixture, const std::string& name) const {
        fs::copy_file(Fixture(fixture), folder / name);
        return folder / name;
    }

    fs::path folder;
};

struct Refused {
    yStatus status = yOK;
    std::string text;
};

Refused Refusal(PluginManager& manager, const fs::path& file) {
    try {
        manager.Load(file);
    } catch (const Vor::Exception& e) {
        return {e.Status(), e.what()};
    }
    return {};
}

std::vector<std::string> Texts(const PluginLib& lib, const std::string& type) {
    std::vector<std::string> texts;
    for (const auto& plugin : lib.PluginsByType(type)) {
        texts.emplace_back(static_cast<const char*>(plugin->GetObject()));
    }
    return texts;
}

bool IsMapped(const fs::path& file) {
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

} // namespace

TEST_F(PluginManagerTest, LoadedLibraryGivesItsPluginsByTypeInOrder) {
    PluginManager manager;
    const PluginLib& lib = manager.Load(Fixture("TwoTexts"));
    EXPECT_EQ(manager.Count(), 1U);
    EXPECT_EQ(&manager.At(0), &lib);
    EXPECT_EQ(lib.Path(), Fixture("TwoTexts").string());
    EXPECT_EQ(Texts(lib, "Test.Text"), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(Texts(lib, "Test.Other"), (std::vector<std::string>{"other"}));
    EXPECT_TRUE(lib.PluginsByType("Test").empty());
    EXPECT_TRUE(manager.Refusals().empty());
}

TEST_F(PluginManagerTest, IndexPastTheCountThrowsParameter) {
    PluginManager manager;
    try {
        manager.At(0);
        FAIL() << "a library was given that isn't there";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_PARAMETER);
    }
}

TEST_F(PluginManagerTest, LibraryWithoutPluginsIsLegal) {
    PluginManager manager;
    manager.Load(Fixture("PublishesNothing"));
    EXPECT_EQ(manager.Count(), 1U);
    EXPECT_TRUE(manager.At(0).PluginsByType("Test.Text").empty());
}

TEST_F(PluginManagerTest, LibrariesOfTheSameNamesDontMeetEachOther) {
    PluginManager manager;
    manager.Load(Fixture("TwoTexts"));
    manager.Load(Fixture("OneText"));
    EXPECT_EQ(Texts(manager.At(0), "Test.Text"), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(Texts(manager.At(1), "Test.Text"), (std::vector<std::string>{"of another file"}));
}

TEST_F(PluginManagerTest, LoadedEventComesWhenTheLibraryIsListed) {
    std::vector<std::string> events;
    PluginManager manager;
    manager.LoadEvent().Add([&](const PluginLib& lib, PluginEvent event) {
        EXPECT_EQ(&manager.At(manager.Count() - 1), &lib);
        events.push_back(lib.Path() + (event == PluginEvent::Loaded ? " loaded" : " unloading"));
    });
    manager.Load(Fixture("OneText"));
    EXPECT_EQ(events, std::vector<std::string>{Fixture("OneText").string() + " loaded"});
    EXPECT_EQ(static_cast<int>(PluginEvent::Loaded), 0);
    EXPECT_EQ(static_cast<int>(PluginEvent::Unloading), 1);
}

TEST_F(PluginManagerTest, FailureOfAHandlerDoesntUndoTheLoad) {
    const Vor::LogCapture log;
    PluginManager manager;
    manager.LoadEvent().Add([](const PluginLib&, PluginEvent) { throw std::runtime_error("handler"); });
    manager.Load(Fixture("OneText"));
    EXPECT_EQ(manager.Count(), 1U);
    EXPECT_TRUE(log.Contains("Caught std::runtime_error: handler"));
}

TEST_F(PluginManagerTest, MissingFileIsRefused) {
    PluginManager manager;
    const Refused refused = Refusal(manager, "no/such/file.so");
    EXPECT_EQ(refused.status, yERROR_NOT_FOUND);
    EXPECT_EQ(refused.text, "Plug-in \"no/such/file.so\": expected a file");
    ASSERT_EQ(manager.Refusals().size(), 1U);
    EXPECT_EQ(manager.Refusals()[0].path, "no/such/file.so");
    EXPECT_EQ(manager.Refusals()[0].reason, refused.text);
}

TEST_F(PluginManagerTest, FileThatIsNoLibraryIsRefused) {
    PluginManager manager;
    std::ofstream(folder / "text.so") << "not a library";
    const Refused refused = Refusal(manager, folder / "text.so");
    EXPECT_EQ(refused.status, yERROR_FORMAT);
    EXPECT_NE(refused.text.find("text.so\": expected a library that can be opened"), std::string::npos);
}

TEST_F(PluginManagerTest, OtherPlatformVersionIsRefusedAndBothVersionsAreNamed) {
    PluginManager manager;
    const Refused refused = Refusal(manager, Fixture("OtherPlatformVersion"));
    EXPECT_EQ(refused.status, yERROR_VERSION);
    EXPECT_THAT(refused.text, testing::ContainsRegex("OtherPlatformVersion.so\": expected platform version "
                                                     "1\\.0\\.0\\.0\\+[0-9a-f]+, it was built for \"2.0.0.0\"$"));
    EXPECT_EQ(manager.Count(), 0U);
}

TEST_F(PluginManagerTest, UnreadableVersionOfItsOwnIsRefused) {
    PluginManager manager;
    EXPECT_EQ(Refusal(manager, Fixture("BadAssemblyVersion")).status, yERROR_VERSION);
}

TEST_F(PluginManagerTest, FunctionsOfAnotherFileDontCount) {
    void* handle = dlopen(Fixture("NoEntry").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    EXPECT_NE(dlsym(handle, "yPlugin_ConstructAssembly"), nullptr) << "a look-up doesn't find another file's function";
    dlclose(handle);
    PluginManager manager;
    const Refused refused = Refusal(manager, Fixture("NoEntry"));
    EXPECT_EQ(refused.status, yERROR_NOT_FOUND);
    EXPECT_NE(refused.text.find("NoEntry.so\": expected an exported function yPlugin_ConstructAssembly of its own"),
              std::string::npos);
}

TEST_F(PluginManagerTest, EntryThatThrowsSomethingElseIsRefused) {
    PluginManager manager;
    const Refused refused = Refusal(manager, Fixture("PublishThrowsInt"));
    EXPECT_EQ(refused.status, yERROR);
    EXPECT_NE(refused.text.find("yPlugin_Publish to succeed, it threw something that isn't an exception"),
              std::string::npos);
    EXPECT_FALSE(IsMapped(Fixture("PublishThrowsInt")));
    EXPECT_EQ(Refusal(manager, Fixture("VersionThrows")).status, yERROR);
}

TEST_F(PluginManagerTest, EntryThatThrowsAnExceptionOfItsOwnIsRefusedWithItsText) {
    PluginManager manager;
    const Refused refused = Refusal(manager, Fixture("PublishThrowsException"));
    EXPECT_EQ(refused.status, yERROR);
    EXPECT_NE(refused.text.find("yPlugin_Publish to succeed, it threw: thrown by the plug-in"), std::string::npos);
    EXPECT_FALSE(IsMapped(Fixture("PublishThrowsException")));
}

TEST_F(PluginManagerTest, EntryThatThrowsAStatusIsRefusedWithIt) {
    PluginManager manager;
    const Refused refused = Refusal(manager, Fixture("PublishThrowsStatus"));
    EXPECT_EQ(refused.status, yERROR_CONFLICT);
    EXPECT_NE(refused.text.find("it threw status -980"), std::string::npos);
}

TEST_F(PluginManagerTest, EntryThatReturnsAFailureIsRefusedWithIt) {
    PluginManager manager;
    EXPECT_EQ(Refusal(manager, Fixture("PublishFails")).status, yERROR_STATE);
    EXPECT_EQ(Refusal(manager, Fixture("AssemblyFails")).status, yERROR_BUSY);
    EXPECT_EQ(Refusal(manager, Fixture("PublishesEmpty")).status, yERROR_PARAMETER);
    EXPECT_EQ(manager.Count(), 0U);
    EXPECT_EQ(manager.Refusals().size(), 3U);
}

TEST_F(PluginManagerTest, RefusedFileLeavesNothingBehindAndRaisesNoEvent) {
    int events = 0;
    PluginManager manager;
    manager.LoadEvent().Add([&](const PluginLib&, PluginEvent) { ++events; });
    Refusal(manager, Fixture("PublishFails"));
    EXPECT_FALSE(IsMapped(Fixture("PublishFails")));
    EXPECT_EQ(events, 0);
}

TEST_F(PluginManagerTest, FileThatIsLoadedAlreadyIsRefusedAlsoThroughALink) {
    PluginManager manager;
    manager.Load(Fixture("OneText"));
    EXPECT_EQ(Refusal(manager, Fixture("OneText")).status, yERROR_ALREADY_EXISTS);
    fs::create_symlink(Fixture("OneText"), folder / "link.so");
    EXPECT_EQ(Refusal(manager, folder / "link.so").status, yERROR_ALREADY_EXISTS);
    EXPECT_EQ(manager.Count(), 1U);
}

TEST_F(PluginManagerTest, FolderIsLoadedInOrderOfNameAndRefusedFilesDontStopIt) {
    const Vor::LogCapture log;
    Copy("OneText", "c.so");
    Copy("PublishThrowsInt", "b.so");
    Copy("TwoTexts", "a.so");
    Copy("PublishesNothing", "d.so.old");
    PluginManager manager;
    manager.LoadFolder(folder);
    ASSERT_EQ(manager.Count(), 2U);
    EXPECT_EQ(manager.At(0).Path(), (folder / "a.so").string());
    EXPECT_EQ(manager.At(1).Path(), (folder / "c.so").string());
    ASSERT_EQ(manager.Refusals().size(), 1U);
    EXPECT_EQ(manager.Refusals()[0].path, (folder / "b.so").string());
    EXPECT_TRUE(log.Contains(Vor::LevelError, manager.Refusals()[0].reason));
}

TEST_F(PluginManagerTest, FolderThatIsMissingThrowsNotFound) {
    PluginManager manager;
    try {
        manager.LoadFolder(folder / "missing");
        FAIL() << "a missing folder was read";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_NOT_FOUND);
        EXPECT_NE(std::string(e.what()).find("missing"), std::string::npos);
    }
}

TEST_F(PluginManagerTest, UnloadRaisesTheEventWhileThePluginsAreThereThenDropsThem) {
    int events = 0;
    PluginManager manager;
    const PluginLib& lib = manager.Load(Fixture("OneText"));
    manager.Load(Fixture("TwoTexts"));
    const std::weak_ptr<VorPlugin::IPlugin> plugin = lib.PluginsByType("Test.Text").front();
    auto handler = manager.LoadEvent().Add([&](const PluginLib& which, PluginEvent event) {
        ++events;
        EXPECT_EQ(event, PluginEvent::Unloading);
        EXPECT_EQ(&which, &lib);
        EXPECT_EQ(Texts(which, "Test.Text").size(), 1U);
        EXPECT_EQ(manager.Count(), 2U);
    });
    manager.Unload(lib);
    manager.LoadEvent().Remove(handler);
    EXPECT_EQ(events, 1);
    EXPECT_TRUE(plugin.expired());
    ASSERT_EQ(manager.Count(), 1U);
    EXPECT_EQ(manager.At(0).Path(), Fixture("TwoTexts").string());
}

TEST_F(PluginManagerTest, UnloadOfAnUnknownLibraryThrowsNotFound) {
    PluginManager manager;
    const PluginLib stranger("stranger");
    try {
        manager.Unload(stranger);
        FAIL() << "an unknown library was unloaded";
    } catch (const Vor::Exception& e) {
        EXPECT_EQ(e.Status(), yERROR_NOT_FOUND);
    }
}

TEST_F(PluginManagerTest, CodeStaysUntilTheManagerGoes) {
    {
        PluginManager manager;
        manager.Unload(manager.Load(Fixture("OneText")));
        EXPECT_TRUE(IsMapped(Fixture("OneText")));
        manager.Load(Fixture("OneText"));
        EXPECT_EQ(manager.Count(), 1U);
        EXPECT_EQ(Texts(manager.At(0), "Test.Text"), (std::vector<std::string>{"of another file"}));
    }
    EXPECT_FALSE(IsMapped(Fixture("OneText")));
}

TEST_F(PluginManagerTest, CodeOfAPluginThatIsStillHeldStays) {
    const Vor::LogCapture log;
    std::shared_ptr<VorPlugin::IPlugin> held;
    {
        PluginManager manager;
        held = manager.Load(Copy("TwoTexts", "held.so")).PluginsByType("Test.Other").front();
    }
    EXPECT_STREQ(held->Type(), "Test.Other");
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "A plug-in is still in use, so its code stays in the process"));
    held.reset();
}

TEST_F(PluginManagerTest, ManagerUnloadsTheLastLibraryFirst) {
    std::vector<std::string> unloaded;
    {
        PluginManager manager;
        manager.Load(Fixture("OneText"));
        manager.Load(Fixture("TwoTexts"));
        manager.LoadEvent().Add([&](const PluginLib& lib, PluginEvent) { unloaded.push_back(lib.Path()); });
    }
    EXPECT_EQ(unloaded, (std::vector<std::string>{Fixture("TwoTexts").string(), Fixture("OneText").string()}));
}

TEST_F(PluginManagerTest, PluginsOfTheProgramItselfComeTheSameWay) {
    std::vector<PluginEvent> events;
    PluginManager manager;
    manager.LoadEvent().Add([&](const PluginLib&, PluginEvent event) { events.push_back(event); });
    const PluginLib& lib = manager.Add(std::make_unique<PluginLib>("built-in"));
    EXPECT_EQ(lib.Path(), "built-in");
    EXPECT_EQ(manager.Count(), 1U);
    manager.Unload(lib);
    EXPECT_EQ(manager.Count(), 0U);
    EXPECT_EQ(events, (std::vector<PluginEvent>{PluginEvent::Loaded, PluginEvent::Unloading}));
}

TEST(PluginLibTest, EmptyPluginIsRefused) {
    PluginLib lib("lib");
    EXPECT_THROW(lib.Add(nullptr), Vor::Exception);
}
