#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/TestService.h"
#include "Vor/Logging.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/IControlInstance.h"

#include <algorithm>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>

using Tests::TestPlugin;
using Tests::TestService;
using VorCommon::PersistDomain;
using VorControl::ControlModule;
using VorControl::ControlProtocol::ProtocolStatus;

namespace {

/// Plug-in libraries that misbehave, beside a service "well" that doesn't.
class MisbehavingServicesTest : public testing::Test {
protected:
    MisbehavingServicesTest() { TestPlugin().Add("well", well).Publish(plugins); }

    const VorPlugin::PluginLib& Load(const std::string& name) {
        return plugins.Load(Tests::BuiltFile("test-plugins/" + name + ".so"));
    }

    void Build() { module = std::make_unique<ControlModule>(plugins, environ.router, environ.Record()); }

    void Enable(const std::string& type) {
        store.files["/controls/" + type + "/config.json"] =
            R"({"version":"1","vor:control":{"enabled":true,"parameters":{},"parametersVersion":"1"}})";
    }

    std::ptrdiff_t WellStarts() const {
        const auto& calls = well.lock()->calls;
        return std::count(calls.begin(), calls.end(), "Start");
    }

    VorControl::IControlInstance& Service(const std::string& id) { return module->Manager().GetInstance(id); }

    Vor::LogCapture log;
    VorPlugin::PluginManager plugins;
    Tests::ControlEnviron environ;
    Tests::MemoryStore store;
    std::weak_ptr<TestService> well;
    std::unique_ptr<ControlModule> module;
};

TEST_F(MisbehavingServicesTest, AStartThatThrowsIsToldAndTheOthersRun) {
    Load("StartThrowsException");
    Build();
    Enable("startThrowsException");
    Enable("well");
    module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_TRUE(Service("startThrowsException").IsEnabled());
    EXPECT_NE(Service("startThrowsException").GetProtocolStatus(), ProtocolStatus::Running);
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Protocol (startThrowsException) failed to start (the cable is cut)."), 1U);
    EXPECT_TRUE(Service("well").IsEnabled());
    EXPECT_EQ(WellStarts(), 1);
}

TEST_F(MisbehavingServicesTest, AStartThatFailsShowsInTheStatusAndInTheProblemsWithItsReason) {
    Load("StartFails");
    Build();
    Enable("startFails");
    Enable("well");
    module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_TRUE(Service("startFails").IsEnabled());
    EXPECT_EQ(Service("startFails").GetProtocolStatus(), ProtocolStatus::FailedToStart);
    ASSERT_EQ(environ.problems.List().size(), 1U);
    EXPECT_EQ(environ.problems.List()[0].text, "Could not start service: the port is taken");
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Protocol (startFails) failed to start (the port is taken)."), 1U);
    EXPECT_EQ(WellStarts(), 1);
}

TEST_F(MisbehavingServicesTest, AStartThatThrowsNoStandardExceptionIsAFailedStartAndTheOthersRun) {
    Load("StartThrowsInt");
    Build();
    Enable("startThrowsInt");
    Enable("well");
    module->Manager().LoadPersistDomain(PersistDomain::Job, store);
    EXPECT_TRUE(Service("startThrowsInt").IsEnabled());
    ASSERT_EQ(environ.problems.List().size(), 1U);
    EXPECT_EQ(environ.problems.List()[0].text, "Could not start service: unknown exception");
    EXPECT_TRUE(Service("well").IsEnabled());
    EXPECT_EQ(WellStarts(), 1);

    module->Manager().SavePersistDomain(PersistDomain::Job, store);
    for (const char* type : {"startThrowsInt", "well"}) {
        const std::string saved = store.files["/controls/" + std::string(type) + "/config.json"];
        EXPECT_NE(saved.find(R"("enabled":true)"), std::string::npos) << saved;
    }
}

TEST_F(MisbehavingServicesTest, ATakenTypeNameCostsThatRecordAlone) {
    Load("StartThrowsException");
    Load("TypeNameTaken");
    Build();
    EXPECT_EQ(module->Manager().List(), (std::vector<std::string>{"startThrowsException", "typeNameFree", "well"}));
    EXPECT_EQ(log.Count(Vor::LevelError, "Failed to add control service \"Fixture startThrowsException\" ()"), 1U);
    EXPECT_EQ(Service("typeNameFree").GetProtocolStatus(), ProtocolStatus::Stopped);
}

class MisbehavingFactoryTest : public MisbehavingServicesTest,
                               public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(MisbehavingFactoryTest, FailsTheModuleWithItsTypeNameAndWithoutTheLibraryItWorks) {
    const auto& [file, type] = GetParam();
    const auto& lib = Load(file);
    std::string blamed;
    try {
        Build();
    } catch (const VorControl::ControlCreateException& e) {
        blamed = e.TypeName();
    }
    EXPECT_EQ(blamed, type);
    EXPECT_TRUE(well.expired());
    EXPECT_EQ(environ.hub.ResultHandlerCount(), 0U);
    EXPECT_EQ(environ.registrar.registerCount, 0);

    plugins.Unload(lib);
    Build();
    EXPECT_EQ(module->Manager().List(), std::vector<std::string>{"well"});
}

INSTANTIATE_TEST_SUITE_P(EachKind, MisbehavingFactoryTest,
                         testing::Values(std::pair("FactoryThrows", "factoryThrows"),
                                         std::pair("FactoryGivesNothing", "factoryGivesNothing")),
                         [](const auto& info) { return std::string(info.param.first); });

} // namespace
