#include "VorControl/Persistence/PersistControl.h"

#include "PersistControlFixture.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/Persistence/PersistInstanceProperties.h"
#include "yApi/yFault.h"
#include "yApi/yStatus.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Tests::FakeControlInstance;
using VorCommon::PersistDomain;
using VorControl::Persistence::PersistLoadResult;

namespace {

using Calls = std::vector<std::string>;
using Options = FakeControlInstance::Options;
using Status = FakeControlInstance::Status;
using PersistControlTest = Tests::PersistControlFixture;

} // namespace

TEST_F(PersistControlTest, TheFileFormatHasVersionOne) {
    EXPECT_STREQ(control.Version(), "1");
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST(PersistInstancePropertiesTest, EnabledIsTitledAndFalseAtFirst) {
    VorControl::PersistInstanceProperties properties;
    EXPECT_FALSE(properties.enabled.Get());
    EXPECT_EQ(properties.enabled.GetTitle(), "Service Enabled");
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "Service Enabled"));
}

TEST(PersistLoadResultTest, TheValuesAreThoseThatOthersRead) {
    EXPECT_EQ(static_cast<int>(PersistLoadResult::None), 0);
    EXPECT_EQ(static_cast<int>(PersistLoadResult::UnsupportedUpgrade), 1);
    EXPECT_EQ(static_cast<int>(PersistLoadResult::Upgraded), 2);
    EXPECT_EQ(static_cast<int>(PersistLoadResult::PartMissing), 3);
    EXPECT_EQ(static_cast<int>(PersistLoadResult::AssemblyInPart), 5);
    EXPECT_EQ(static_cast<int>(PersistLoadResult::Failed), -1);
}

// The settings alone

TEST_F(PersistControlTest, TheSettingsAreLoadedWithoutStartOrStop) {
    instance.hasGroup = false;
    json section = json::parse(R"({"enabled":false,"parameters":{"port":7},"parametersVersion":"1"})");
    control.LoadSettings(instance, section);
    EXPECT_EQ(instance.params->port.Get(), 7);
    EXPECT_EQ(instance.calls,
              (Calls{"ResetInstance true 4", "BeginUpdateParameters", "ParamsUpdate", "EndUpdateParameters"}));
    section["parametersVersion"] = "0";
    EXPECT_FAILURE(control.LoadSettings(instance, section), yERROR_VERSION,
                   "Error loading parameters for service 'Fake Service'");
    EXPECT_FALSE(instance.enabled);
}

// Init

TEST_F(PersistControlTest, InitOfTheJobResetsEverythingAndWritesNothing) {
    control.Init(instance, PersistDomain::Job, store);
    EXPECT_EQ(instance.calls, Calls{"ResetInstance false 4"});
    EXPECT_TRUE(store.files.empty());
}

TEST_F(PersistControlTest, InitOfTheWorkspaceWritesTheDataOfAServiceThatKeepsSome) {
    instance.options = Options::WorkspaceData;
    instance.workspaceData = {{"a", 1}, {"b", "x"}};
    control.Init(instance, PersistDomain::Workspace, store);
    EXPECT_EQ(store.files[FakeControlInstance::Path], "{\"a\":1,\"b\":\"x\"}");
    EXPECT_EQ(instance.calls, Calls{"WorkspacePersistData"});
}

TEST_F(PersistControlTest, InitOfTheWorkspaceWritesNoEmptyData) {
    instance.options = Options::WorkspaceData;
    for (const json& data : {json(), json::object(), json::array()}) {
        instance.workspaceData = data;
        control.Init(instance, PersistDomain::Workspace, store);
    }
    EXPECT_TRUE(store.files.empty());
}

TEST_F(PersistControlTest, InitOfTheWorkspaceLeavesOtherServicesAlone) {
    instance.workspaceData = {{"a", 1}};
    control.Init(instance, PersistDomain::Workspace, store);
    EXPECT_TRUE(store.files.empty());
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, AnUnknownDomainIsLeftAlone) {
    const auto unknown = static_cast<PersistDomain>(9);
    instance.options = Options::All;
    store.files[FakeControlInstance::Path] = "not json";
    control.Init(instance, unknown, store);
    control.Load(instance, unknown, store);
    control.Save(instance, unknown, store);
    EXPECT_TRUE(instance.calls.empty());
    EXPECT_TRUE(store.reads.empty());
    EXPECT_TRUE(store.writes.empty());
}

// Load: the file

TEST_F(PersistControlTest, AMissingFileChangesNothingAndReportsNothing) {
    control.Load(instance, PersistDomain::Job, store);
    instance.options = Options::WorkspaceData;
    control.Load(instance, PersistDomain::Workspace, store);
    EXPECT_TRUE(instance.calls.empty());
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlTest, TheFileIsFoundByTheTypeName) {
    instance.typeName = "other";
    Load("not json");
    EXPECT_TRUE(store.reads.empty());
    store.files["/controls/other/config.json"] = "{\"version\":\"1\",\"vor:control\":{\"enabled\":false}}";
    control.Load(instance, PersistDomain::Job, store);
    EXPECT_EQ(store.reads, Calls{"/controls/other/config.json"});
}

TEST_F(PersistControlTest, WhatIsNoJsonIsRefused) {
    for (const std::string& content : {std::string(), std::string("{"), std::string("{} x"), std::string("\xff"),
                                       std::string(65, '[') + std::string(65, ']')}) {
        const auto failure = Tests::FailureOf([&] { Load(content); });
        ASSERT_TRUE(failure.has_value()) << content;
        EXPECT_EQ(failure->status, yERROR_FORMAT);
    }
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, AStoreThatCannotReadFailsTheLoad) {
    store.readStatus = yERROR_TIMEOUT;
    EXPECT_TEXTLESS_FAILURE(Load("{}"), yERROR_TIMEOUT);
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, ADocumentWithoutTheServiceIsRefused) {
    for (const char* content :
         {"{}", "{\"version\":\"1\"}", "[]", "[\"vor:control\"]", "null", "7", "\"vor:control\""}) {
        log.Clear();
        VorGetText::GetInstance().ForgetCalls();
        EXPECT_FAILURE(Load(content), yERROR_FORMAT,
                       "No saved information found in service 'Fake Service' configuration file.");
        ExpectForUser(
            Vor::UserWarning,
            "No saved information found in service 'Fake Service' configuration file. No changes made to service.",
            "No saved information found in service '%s' configuration file. No changes made to service.");
    }
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, ADocumentWithoutAVersionIsRefused) {
    EXPECT_FAILURE(Load("{\"vor:control\":{\"enabled\":true}}"), yERROR_FORMAT,
                   "Unsupported configuration file format for service 'Fake Service'.");
    ExpectForUser(Vor::UserWarning,
                  "Unsupported configuration file format for service 'Fake Service'. Manual configuration for service "
                  "may be needed.",
                  "Unsupported configuration file format for service '%s'. Manual configuration for service may be "
                  "needed.");
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, AnyOtherVersionIsRefused) {
    for (const std::string version : {"2", "0", "", "1.0", "1 "}) {
        log.Clear();
        const auto failure =
            Tests::FailureOf([&] { Load("{\"vor:control\":{\"enabled\":true},\"version\":\"" + version + "\"}"); });
        ASSERT_TRUE(failure.has_value()) << version;
        EXPECT_EQ(failure->status, yERROR_VERSION);
        EXPECT_EQ(failure->text, "Unsupported configuration file version for service 'Fake Service'. expected: 1 "
                                 "actual: " +
                                     version);
        ExpectForUser(Vor::UserWarning,
                      "Unsupported configuration file version for service 'Fake Service'. Manual configuration for "
                      "service may be needed.",
                      "Unsupported configuration file version for service '%s'. Manual configuration for service may "
                      "be needed.");
    }
}

TEST_F(PersistControlTest, AVersionThatIsNoTextIsRefused) {
    EXPECT_THROW(Load("{\"vor:control\":{\"enabled\":true},\"version\":1}"), std::exception);
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, UserTextsAreTranslated) {
    const Tests::Translation translation("beApp.ctrl",
                                         "Unsupported configuration file format for service '%s'. Manual "
                                         "configuration for service may be needed.",
                                         "Format von '%s' unbekannt.");
    EXPECT_FAILURE(Load("{\"vor:control\":{}}"), yERROR_FORMAT,
                   "Unsupported configuration file format for service 'Fake Service'.");
    EXPECT_EQ(log.Count(Vor::UserWarning, "Format von 'Fake Service' unbekannt."), 1U);
}

// Load: resetting and enabling

TEST_F(PersistControlTest, AnEnabledServiceIsResetLoadedStartedAndTold) {
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true,\"parameters\":{\"port\":7},\"parametersVersion\":\"1\"}"
         "}");
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "BeginUpdateParameters", "ParamsUpdate",
                                     "EndUpdateParameters", "Enable true", "OnPersistDomainLoaded job"}));
    EXPECT_EQ(instance.params->port.Get(), 7);
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
}

TEST_F(PersistControlTest, ADisabledServiceKeepsItsDefaultsAndIsStopped) {
    instance.enabled = true;
    instance.status = Status::Running;
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":false,\"parameters\":{\"port\":7},\"parametersVersion\":"
         "\"1\"}}");
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "Enable false", "OnPersistDomainLoaded job"}));
    EXPECT_EQ(instance.params->port.Get(), 502);
}

TEST_F(PersistControlTest, WithoutAnyOptionNothingIsResetOrLoaded) {
    instance.options = Options::None;
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true,\"parameters\":{\"port\":7}}}");
    EXPECT_EQ(instance.calls, (Calls{"Enable true", "OnPersistDomainLoaded job"}));
}

TEST_F(PersistControlTest, AnyOneOptionResetsEverything) {
    for (const Options option : {Options::Params, Options::OutputsMap, Options::RegisterAssemblies,
                                 Options::WorkspaceData, Options::DeviceManager}) {
        instance.calls.clear();
        instance.options = option;
        Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":false}}");
        ASSERT_FALSE(instance.calls.empty());
        EXPECT_EQ(instance.calls.front(), "ResetInstance true 4");
    }
}

TEST_F(PersistControlTest, AServiceThatDeniesAllOptionsAtOnceIsResetOptionByOption) {
    instance.answersAllOptions = false;
    instance.options = Options::All;
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":false}}");
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 0", "ResetInstance true 1", "ResetInstance true 2",
                                     "ResetInstance true 3", "OnPersistDomainLoaded job"}));
    instance.calls.clear();
    instance.options = Options::OutputsMap;
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":false}}");
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 1", "OnPersistDomainLoaded job"}));
}

TEST_F(PersistControlTest, AMissingEnableSettingDisablesTheService) {
    for (const char* section : {"{}", "[]", "null", "\"enabled\"", "{\"parameters\":{\"port\":7}}"}) {
        log.Clear();
        instance.calls.clear();
        instance.enabled = true;
        instance.status = Status::Running;
        Load(std::string("{\"version\":\"1\",\"vor:control\":") + section + "}");
        EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "Enable false", "OnPersistDomainLoaded job"}));
        ExpectForUser(Vor::UserWarning,
                      "Missing enable/disable setting in configuration file for service 'Fake Service'. Service will "
                      "be disabled. Manual configuration for service may be needed.",
                      "Missing enable/disable setting in configuration file for service '%s'. Service will be "
                      "disabled. Manual configuration for service may be needed.");
        EXPECT_EQ(log.Count(Vor::LevelWarning,
                            "Missing enable/disable setting in configuration file for service 'Fake Service'."),
                  1U);
    }
}

TEST_F(PersistControlTest, AnEnableSettingThatIsNoBooleanFailsTheLoad) {
    for (const char* enabled : {"\"true\"", "1", "null", "{}"}) {
        EXPECT_THROW(Load(std::string("{\"version\":\"1\",\"vor:control\":{\"enabled\":") + enabled + "}}"),
                     std::exception)
            << enabled;
    }
}

TEST_F(PersistControlTest, ARunningServiceIsNotStartedAgain) {
    const std::string content = "{\"version\":\"1\",\"vor:control\":{\"enabled\":true}}";
    Load(content);
    instance.calls.clear();
    Load(content);
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "OnPersistDomainLoaded job"}));
}

TEST_F(PersistControlTest, AServiceWhoseStartFailedIsStartedAgain) {
    instance.enabled = true;
    for (const Status status : {Status::Running, Status::Stopped, Status::Starting, Status::Stopping,
                                Status::FailedToStart, Status::FailedToStop}) {
        instance.status = status;
        instance.calls.clear();
        Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true}}");
        EXPECT_EQ(std::count(instance.calls.begin(), instance.calls.end(), "Enable true"),
                  status == Status::FailedToStart ? 1 : 0);
    }
}

TEST_F(PersistControlTest, AStoppedServiceIsNotStoppedAgain) {
    instance.status = Status::FailedToStart;
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":false}}");
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "OnPersistDomainLoaded job"}));
}

TEST_F(PersistControlTest, TheHmiServiceIsLeftToSettleFirst) {
    instance.id = "hmi";
    int asked = 0;
    instance.onStatus = [&] {
        ++asked;
        instance.status = asked < 3 ? Status::Starting : (asked < 4 ? Status::Stopping : Status::Stopped);
    };
    instance.actions["Enable true"] = [&] { EXPECT_EQ(asked, 4); };
    Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true}}");
    EXPECT_TRUE(instance.enabled);
}

TEST_F(PersistControlTest, OnlyTheServiceWithTheIdHmiIsWaitedFor) {
    instance.displayName = "hmi";
    instance.typeName = "hmi";
    instance.status = Status::Starting;
    store.files["/controls/hmi/config.json"] = "{\"version\":\"1\",\"vor:control\":{\"enabled\":true}}";
    control.Load(instance, PersistDomain::Job, store);
    EXPECT_TRUE(instance.enabled);
}

TEST_F(PersistControlTest, AWaitThatFailsThrowsItsStatus) {
    instance.id = "hmi";
    instance.status = Status::Starting;
    yFault_Set("yThread_Sleep", yERROR_BUSY);
    EXPECT_TEXTLESS_FAILURE(Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true}}"), yERROR_BUSY);
    EXPECT_FALSE(instance.enabled);
}

TEST_F(PersistControlTest, FailingSettingsAreReportedAfterTheServiceWasStarted) {
    EXPECT_TEXTLESS_FAILURE(Load("{\"version\":\"1\",\"vor:control\":{\"enabled\":true,\"parameters\":{}}}"), yERROR);
    EXPECT_EQ(instance.calls, (Calls{"ResetInstance true 4", "Enable true"}));
}

// Load: the workspace

TEST_F(PersistControlTest, WorkspaceDataAreHandedToTheService) {
    instance.options = Options::WorkspaceData;
    Load("{\"a\":[1,2]}", PersistDomain::Workspace);
    EXPECT_EQ(instance.workspaceData, json::parse("{\"a\":[1,2]}"));
    EXPECT_EQ(instance.calls, (Calls{"WorkspacePersistData", "OnPersistDomainLoaded workspace"}));
}

TEST_F(PersistControlTest, EmptyWorkspaceDataAreIgnored) {
    instance.options = Options::WorkspaceData;
    for (const char* content : {"null", "{}", "[]"}) {
        Load(content, PersistDomain::Workspace);
    }
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, WorkspaceDataAreNotReadForOtherServices) {
    Load("{\"a\":1}", PersistDomain::Workspace);
    EXPECT_TRUE(instance.calls.empty());
    EXPECT_TRUE(store.reads.empty());
}

// Save

TEST_F(PersistControlTest, TheJobIsSavedWithoutBlanks) {
    instance.hasGroup = false;
    instance.params->name = "x y";
    control.Save(instance, PersistDomain::Job, store);
    EXPECT_EQ(store.files[FakeControlInstance::Path],
              "{\"version\":\"1\",\"vor:control\":{\"enabled\":false,\"parameters\":{\"name\":\"x y\","
              "\"port\":502},\"parametersVersion\":\"1\"}}");
}

TEST_F(PersistControlTest, ASavedServiceLoadsTheSame) {
    instance.enabled = true;
    instance.params->port = 1502;
    control.Save(instance, PersistDomain::Job, store);
    FakeControlInstance other;
    control.Load(other, PersistDomain::Job, store);
    EXPECT_TRUE(other.enabled);
    EXPECT_EQ(other.params->port.Get(), 1502);
}

TEST_F(PersistControlTest, WithoutOptionsOnlyTheEnableSettingIsSaved) {
    instance.options = Options::None;
    instance.enabled = true;
    control.Save(instance, PersistDomain::Job, store);
    EXPECT_EQ(store.files[FakeControlInstance::Path], "{\"version\":\"1\",\"vor:control\":{\"enabled\":true}}");
    EXPECT_TRUE(instance.calls.empty());
}

TEST_F(PersistControlTest, WorkspaceDataAreSavedUnlessTheyAreEmpty) {
    instance.options = Options::WorkspaceData;
    control.Save(instance, PersistDomain::Workspace, store);
    EXPECT_TRUE(store.files.empty());
    instance.workspaceData = {{"a", 1}};
    control.Save(instance, PersistDomain::Workspace, store);
    EXPECT_EQ(store.files[FakeControlInstance::Path], "{\"a\":1}");
    instance.workspaceData = json::object();
    control.Save(instance, PersistDomain::Workspace, store);
    EXPECT_EQ(store.files[FakeControlInstance::Path], "{\"a\":1}") << "an older file stays";
}

TEST_F(PersistControlTest, WorkspaceDataOfOtherServicesAreNotSaved) {
    instance.workspaceData = {{"a", 1}};
    control.Save(instance, PersistDomain::Workspace, store);
    EXPECT_TRUE(store.files.empty());
}

TEST_F(PersistControlTest, AStoreThatCannotWriteFailsTheSave) {
    store.writeStatus = yERROR_READ_ONLY;
    EXPECT_TEXTLESS_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR_READ_ONLY);
}
