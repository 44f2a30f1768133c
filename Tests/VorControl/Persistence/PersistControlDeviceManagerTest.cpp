#include "PersistControlFixture.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceManager.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Tests::FakeControlInstance;
using VorCommon::PersistDomain;
using VorControl::Persistence::PersistLoadResult;

namespace {

using Lines = std::vector<std::string>;
using Options = FakeControlInstance::Options;

constexpr const char* LoadFailed = "Error loading device manager for service 'Fake Service'";
constexpr const char* SaveFailed = "Error saving device manager for service 'Fake Service'";
constexpr const char* Section = R"({"selectedDevicesList":[]})";

class PersistControlDeviceManagerTest : public Tests::PersistControlFixture {
protected:
    PersistControlDeviceManagerTest() { instance.deviceManager = &devices; }

    void LoadSection(const std::string& section) {
        Load(R"({"version":"1","vor:control":{"enabled":true,"deviceManager":)" + section + "}}");
    }

    /// The device manager throws in this call.
    void Fail(const std::string& call, yStatus status) {
        devices.OnCall([call, status](const std::string& made) {
            if (made == call) {
                Vor::Throw(status, "broken");
            }
        });
    }

    nlohmann::json Saved() {
        control.Save(instance, PersistDomain::Job, store);
        return nlohmann::json::parse(store.files.at(FakeControlInstance::Path)).at("vor:control");
    }

    bool WasUpdated() const {
        return std::find(instance.calls.begin(), instance.calls.end(), "RegisterAssemblyUpdate ") !=
               instance.calls.end();
    }

    Tests::FakeDeviceManager devices;
};

} // namespace

TEST_F(PersistControlDeviceManagerTest, TheSectionIsLoadedAndTheServiceNotified) {
    LoadSection(Section);
    EXPECT_EQ(devices.NewCalls(), Lines{std::string("Load ") + Section});
    EXPECT_TRUE(WasUpdated());
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::None);
    EXPECT_TRUE(instance.enabled);
}

TEST_F(PersistControlDeviceManagerTest, AnotherSectionIsLeftOut) {
    for (const char* const section : {"{}", "[]", "null", "5", R"({"other":[]})"}) {
        LoadSection(section);
        EXPECT_EQ(devices.NewCalls(), Lines{}) << section;
    }
    Load(R"({"version":"1","vor:control":{"enabled":true}})");
    instance.deviceManager = nullptr;
    LoadSection(Section);
    EXPECT_EQ(devices.NewCalls(), Lines{});
    EXPECT_FALSE(WasUpdated());
}

TEST_F(PersistControlDeviceManagerTest, WithoutTheOptionNothingIsLoadedOrSaved) {
    instance.options = Options::Params;
    LoadSection(Section);
    EXPECT_FALSE(Saved().contains("deviceManager"));
    EXPECT_EQ(devices.NewCalls(), Lines{});
}

TEST_F(PersistControlDeviceManagerTest, ADisabledServiceGetsNoDevices) {
    Load(R"({"version":"1","vor:control":{"enabled":false,"deviceManager":{"selectedDevicesList":[]}}})");
    EXPECT_EQ(devices.NewCalls(), Lines{});
}

TEST_F(PersistControlDeviceManagerTest, DevicesThatAreMissingCountAsAChange) {
    Fail(std::string("Load ") + Section, yERROR_PARTIAL);
    LoadSection(Section);
    EXPECT_EQ(control.LastLoadResult(), PersistLoadResult::PartMissing);
    EXPECT_TRUE(WasUpdated());
    EXPECT_TRUE(instance.enabled);
    EXPECT_FALSE(log.Contains(LoadFailed));
}

TEST_F(PersistControlDeviceManagerTest, AnotherFailureIsReportedAfterTheServiceWasStarted) {
    Fail(std::string("Load ") + Section, yERROR_FORMAT);
    EXPECT_TEXTLESS_FAILURE(LoadSection(Section), yERROR);
    EXPECT_TRUE(instance.enabled);
    EXPECT_FALSE(WasUpdated());
    ExpectForUser(Vor::UserError, "Error loading device manager for service 'Fake Service'.",
                  "Error loading device manager for service '%s'.");
    EXPECT_TRUE(log.Contains(Vor::LevelError, LoadFailed));
    EXPECT_TRUE(log.Contains("Caught exception with status -984: broken"));
}

TEST_F(PersistControlDeviceManagerTest, AServiceThatFailsAtTheNotificationIsReported) {
    instance.actions["RegisterAssemblyUpdate "] = [] { Vor::Throw(yERROR_UNIMPLEMENTED); };
    EXPECT_TEXTLESS_FAILURE(LoadSection(Section), yERROR);
    EXPECT_TRUE(log.Contains(Vor::LevelError, LoadFailed));
}

TEST_F(PersistControlDeviceManagerTest, TheSectionIsSavedWithTheLockHeld) {
    EXPECT_EQ(Saved().at("deviceManager").dump(), Section);
    EXPECT_EQ(devices.NewCalls(), (Lines{"BeginLock", "Save", "EndLock"}));
    instance.deviceManager = nullptr;
    EXPECT_FALSE(Saved().contains("deviceManager"));
}

TEST_F(PersistControlDeviceManagerTest, AFailureOfTheSaveIsReportedAndTheLockLeft) {
    Fail("Save", yERROR_NOT_FOUND);
    EXPECT_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR_NOT_FOUND, SaveFailed);
    EXPECT_EQ(devices.NewCalls(), (Lines{"BeginLock", "Save", "EndLock"}));
    ExpectForUser(Vor::UserError, "Error saving device manager for service 'Fake Service'.",
                  "Error saving device manager for service '%s'.");
    EXPECT_TRUE(log.Contains(Vor::LevelError, SaveFailed));
    EXPECT_TRUE(store.files.empty());
}

TEST_F(PersistControlDeviceManagerTest, AFailureOfTheLockIsReported) {
    for (const char* const call : {"BeginLock", "EndLock"}) {
        log.Clear();
        Fail(call, yERROR_BUSY);
        EXPECT_FAILURE(control.Save(instance, PersistDomain::Job, store), yERROR_BUSY, SaveFailed);
        EXPECT_TRUE(log.Contains(Vor::LevelError, "Error locking/unlocking device manager for service 'Fake Service'"));
    }
}
