#include "Services/Common/PluginEntry.h"

#include "Tests/Support/BuiltFile.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Vor/Logging.h"
#include "VorControl/Control/VorCnLib.h"
#include "VorPlugin/PluginFile.h"
#include "VorPlugin/PluginManager.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

std::string Fixture(const std::string& name) {
    return Tests::BuiltFile("test-plugins/" + name + ".so");
}

std::string Refused(const std::string& name, const std::string& what) {
    return "Plug-in \"" + Fixture(name) + "\": expected " + what;
}

bool Mentions(const Vor::LogCapture& log, const std::string& text) {
    const std::vector<Vor::LogRecord> records = log.Records();
    return std::any_of(records.begin(), records.end(),
                       [&text](const Vor::LogRecord& record) { return record.text.find(text) != std::string::npos; });
}

TEST(PluginEntry, MakesOneAssemblyAPluginOfItsOwnNameAndVersionThatNeedsTheLibrary) {
    const VorPlugin::PluginFile file(Fixture("StartFails"));
    const yAssembly assembly = file.ConstructAssembly();
    EXPECT_STREQ(yAssembly_Name(assembly), "StartFailsService");
    EXPECT_EQ(yAssembly_Version(assembly), (yVersion{1, 2, 3, 4}));
    EXPECT_EQ(yAssembly_PlatformVersion(assembly), (yVersion{1, 0, 0, 0}));
    EXPECT_TRUE(yAssembly_IsFinalized(assembly));
    ASSERT_EQ(yAssembly_DependencyCount(assembly), 1U);
    EXPECT_EQ(yAssembly_DependencyAt(assembly, 0), xxVorCnLib_assembly);

    EXPECT_EQ(file.ConstructAssembly(), assembly);
    EXPECT_EQ(yAssembly_ReferenceCount(assembly), 2);
    xyAssembly_VRelease(assembly);
    xyAssembly_VRelease(assembly);
    EXPECT_EQ(xxVorCnLib_assembly, nullptr) << "the library's assembly is still held";
}

TEST(PluginEntry, LeavesNothingOfAnAssemblyThatCantBeMade) {
    Tests::Faults faults;
    const VorPlugin::PluginFile file(Fixture("StartFails"));
    faults.Set("xyAssembly_Finalize", yERROR_BUSY);
    EXPECT_FAILURE(
        file.ConstructAssembly(), yERROR_BUSY,
        Refused("StartFails", "yPlugin_ConstructAssembly to succeed, it returned " + std::to_string(yERROR_BUSY)));
    EXPECT_EQ(xxVorCnLib_assembly, nullptr) << "the library's assembly is still held";
    const yAssembly assembly = file.ConstructAssembly();
    EXPECT_EQ(yAssembly_ReferenceCount(assembly), 1);
    xyAssembly_VRelease(assembly);
}

TEST(PluginEntry, PublishesTheTypesThatTheServiceAdds) {
    VorPlugin::PluginManager plugins;
    const auto published = plugins.Load(Fixture("TypeNameTaken")).PluginsByType("VorControl.ControlPlugin");
    ASSERT_EQ(published.size(), 1U);
    const auto* plugin = static_cast<const VorControl::ControlPlugin*>(published.front()->GetObject());
    ASSERT_EQ(plugin->ControlInfoCount(), 2U);
    EXPECT_EQ(plugin->ControlInfoAt(1).TypeName(), "typeNameFree");
}

TEST(PluginEntry, LogsAnExceptionOfTheServiceAndReturnsItsStatus) {
    const Vor::LogCapture log;
    VorPlugin::PluginManager plugins;
    EXPECT_FAILURE(
        plugins.Load(Fixture("FillThrowsStatus")), yERROR_CONFLICT,
        Refused("FillThrowsStatus", "yPlugin_Publish to succeed, it returned " + std::to_string(yERROR_CONFLICT)));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Plug-in FillThrowsStatusService can't be taken in"));
    EXPECT_TRUE(Mentions(log, "there is no place for it"));
}

TEST(PluginEntry, LogsAnExceptionWithoutStatusAndReturnsAnError) {
    const Vor::LogCapture log;
    VorPlugin::PluginManager plugins;
    EXPECT_FAILURE(plugins.Load(Fixture("FillThrowsException")), yERROR,
                   Refused("FillThrowsException", "yPlugin_Publish to succeed, it returned " + std::to_string(yERROR)));
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Plug-in FillThrowsExceptionService can't be taken in"));
    EXPECT_TRUE(Mentions(log, "thrown by the service"));
}

TEST(PluginEntry, LogsWhatIsNoExceptionAndReturnsAnError) {
    const Vor::LogCapture log;
    VorPlugin::PluginManager plugins;
    EXPECT_FAILURE(plugins.Load(Fixture("FillThrowsInt")), yERROR,
                   Refused("FillThrowsInt", "yPlugin_Publish to succeed, it returned " + std::to_string(yERROR)));
    EXPECT_TRUE(log.Contains(Vor::LevelError,
                             "Plug-in FillThrowsIntService can't be taken in, for something that is no exception"));
}

} // namespace
} // namespace Services::Common
