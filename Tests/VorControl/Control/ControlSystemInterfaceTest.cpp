#include "VorControl/Control/ControlSystemInterface.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeCore.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/TempFolder.h"
#include "VorCommon/PersistManager.h"
#include "VorPipe/PipeManager.h"
#include "yApi/yObject.h"

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using VorControl::ControlSystemInterface;
using VorPipe::PipeDataType;

namespace {

using Stats = VorControl::IControlSystemInterface::SystemStats;
using Handlers = VorControl::IControlSystemInterface::DataSourceEventHandlerContainer;
using Ids = VorControl::IControlSystemInterface::DataSourceEventCallbackIdContainer;
using Properties = VorControl::IControlSystemInterface::ControlDataSourceProperties;

VorPipe::PipeOutput Output(const std::string& name) {
    return {.name = name,
            .ownerName = "Profile",
            .displayName = "Maximum",
            .format = {.type = PipeDataType::Measurement, .arrayed = true}};
}

class ControlSystemInterfaceTest : public testing::Test {
protected:
    Tests::TempFolder folder;
    Tests::FakeCore core;
    VorCommon::PersistManager persistManager{{.dataFolder = folder.Path().string(), .job = "first"}};
    VorPipe::PipeManager pipeManager;
    ControlSystemInterface subject{&core, &persistManager, &pipeManager};
    std::vector<std::string> raised;

    void LoadSavedJob() {
        persistManager.Restore("first", [](VorCommon::IPersistStore& store) {
            const char content = '1';
            store.Write("/setting", &content, 1);
        });
    }

    std::function<void(std::string)> Note(const std::string& event) {
        return [this, event](const std::string& name) { raised.push_back(event + " " + name); };
    }
};

} // namespace

TEST_F(ControlSystemInterfaceTest, OrdersReachTheCore) {
    subject.Start();
    subject.Stop();
    subject.FactoryRestore();
    subject.Restart();
    subject.BlinkLed();
    EXPECT_THAT(core.calls,
                ElementsAre("Start true false", "Stop false false", "FactoryRestore", "Restart", "BlinkLed"));
}

TEST_F(ControlSystemInterfaceTest, TheNextNetworkSettingsAreThoseOfOneInterface) {
    yIpConfig config;
    config.address = {192, 168, 1, 10};
    config.gateway[15] = 7;
    subject.SetNextIpConfig(config, true);
    EXPECT_THAT(core.ipConfigs, ElementsAre(config));
    subject.SetNextIpConfig(yIpConfig(), false);
    EXPECT_THAT(core.ipConfigs, ElementsAre(yIpConfig()));
    EXPECT_THAT(core.calls, ElementsAre("SetIpAddress true", "SetIpAddress false"));
}

TEST_F(ControlSystemInterfaceTest, TheClockIsTheCores) {
    subject.SetLocalNodeDateTime(-5);
    EXPECT_EQ(core.dateTime, -5);
    core.dateTime = 1'000'000;
    EXPECT_EQ(subject.LocalNodeDateTime(), 1'000'000);
    subject.SetLocalNodeNtpHost("time.example", true);
    EXPECT_EQ(subject.LocalNodeNtpHost(), "time.example");
    subject.SetLocalNodeNtpHost("", false);
    EXPECT_EQ(subject.LocalNodeNtpHost(), "");
    EXPECT_TRUE(subject.LocalNodeSyncTime("host"));
    core.syncs = false;
    EXPECT_FALSE(subject.LocalNodeSyncTime(""));
    EXPECT_THAT(core.calls, ElementsAre("SetLocalNodeNtpHost true", "SetLocalNodeNtpHost false",
                                        "LocalNodeSyncTime host", "LocalNodeSyncTime "));
}

TEST_F(ControlSystemInterfaceTest, StatsAreTheMetricsByTheirPosition) {
    persistManager.Load();
    core.runState = 1;
    core.metrics.upTime = 10;
    core.metrics.cpuUsage = 11;
    core.metrics.cpuCount = 12;
    core.metrics.memoryCapacity = 13;
    core.metrics.memoryUsed = 14;
    core.metrics.memoryAvailable = 0xFFFFFFFFFFFFFFFF;
    auto& up = core.metrics.networkInterfaces.Emplace();
    up.linkState = VorCommon::CommonMetrics::LinkState::Up;
    up.linkSpeed = 1'000'000'000;
    core.metrics.networkInterfaces.Emplace().linkSpeed = 5;
    auto& volume = core.metrics.storageVolumes.Emplace();
    volume.capacity = 100;
    volume.used = 60;
    volume.available = 40;
    core.metrics.storageVolumes.Emplace().capacity = 7;
    Stats stats;
    stats.networkIfStates = {9, 9, 9};
    stats.networkIfCounts = {9};

    subject.Stats(stats);

    EXPECT_EQ(stats.runState, 1);
    EXPECT_EQ(stats.loadedJob, "first.vrjob");
    EXPECT_EQ(stats.coreMetric0, 10U);
    EXPECT_EQ(stats.coreMetric1, 11U);
    EXPECT_EQ(stats.coreMetric3, 13U);
    EXPECT_EQ(stats.coreMetric4, 14U);
    EXPECT_EQ(stats.coreMetric5, 0xFFFFFFFFFFFFFFFF);
    EXPECT_THAT(stats.networkIfStates, ElementsAre(1, 0));
    EXPECT_THAT(stats.networkIfCounts, ElementsAre(1'000'000'000U, 5U));
    ASSERT_EQ(stats.storageVolumes.size(), 2U);
    EXPECT_EQ(stats.storageVolumes[0].metric0, 100U);
    EXPECT_EQ(stats.storageVolumes[0].metric1, 60U);
    EXPECT_EQ(stats.storageVolumes[0].metric2, 40U);
    EXPECT_EQ(stats.storageVolumes[1].metric0, 7U);
    EXPECT_EQ(stats.storageVolumes[1].metric2, 0U);
}

TEST_F(ControlSystemInterfaceTest, StorageVolumesAreAppended) {
    core.metrics.storageVolumes.Emplace();
    Stats stats;
    subject.Stats(stats);
    subject.Stats(stats);
    EXPECT_EQ(stats.storageVolumes.size(), 2U);
    EXPECT_EQ(stats.loadedJob, "");
}

TEST_F(ControlSystemInterfaceTest, MetricsOfAnotherTypeAreABadCast) {
    const Vor::Params::Group other;
    core.reporter = &other;
    Stats stats;
    EXPECT_THROW(subject.Stats(stats), std::bad_cast);
}

TEST_F(ControlSystemInterfaceTest, ADataSourceIsNamedByItsOwnerAndItself) {
    pipeManager.Add(Output("profile/max"));
    Properties properties;
    subject.DataSourceProperties("profile/max", properties);
    EXPECT_EQ(properties.type, PipeDataType::Measurement);
    EXPECT_TRUE(properties.arrayed);
    EXPECT_EQ(properties.name, "profile/max");
    EXPECT_EQ(properties.displayName, "Profile / Maximum");
}

TEST_F(ControlSystemInterfaceTest, ADataSourceThatIsntThereIsNotFound) {
    Properties properties;
    properties.name = "old";
    const auto failure = Tests::FailureOf([&] { subject.DataSourceProperties("profile/max", properties); });
    ASSERT_TRUE(failure.has_value());
    EXPECT_EQ(failure->status, yERROR_NOT_FOUND);
    EXPECT_EQ(properties.name, "old");
}

TEST_F(ControlSystemInterfaceTest, EachDataSourceEventReachesItsHandler) {
    Ids ids;
    subject.AddDataSourceEventHandler({Note("created"), Note("deleted"), Note("updated")}, ids);
    EXPECT_TRUE(ids.created.IsSet());
    EXPECT_TRUE(ids.deleted.IsSet());
    EXPECT_TRUE(ids.updated.IsSet());
    pipeManager.Add(Output("a"));
    pipeManager.Update(Output("a"));
    pipeManager.Remove("a");
    EXPECT_THAT(raised, ElementsAre("created a", "updated a", "deleted a"));

    subject.RemoveDataSourceEventHandler(ids);

    EXPECT_FALSE(ids.created.IsSet());
    EXPECT_FALSE(ids.deleted.IsSet());
    EXPECT_FALSE(ids.updated.IsSet());
    pipeManager.Add(Output("b"));
    pipeManager.Update(Output("b"));
    pipeManager.Remove("b");
    EXPECT_EQ(raised.size(), 3U);
    EXPECT_EQ(pipeManager.OutputCreatedEvent().Count(), 0U);
    EXPECT_EQ(pipeManager.OutputDeletedEvent().Count(), 0U);
    EXPECT_EQ(pipeManager.OutputUpdatedEvent().Count(), 0U);
    subject.RemoveDataSourceEventHandler(ids);
}

TEST_F(ControlSystemInterfaceTest, AnEmptyHandlerLeavesItsIdAlone) {
    Ids ids;
    subject.AddDataSourceEventHandler({Note("created"), nullptr, Note("updated")}, ids);
    EXPECT_FALSE(ids.deleted.IsSet());
    EXPECT_EQ(pipeManager.OutputDeletedEvent().Count(), 0U);

    subject.AddDataSourceEventHandler({nullptr, Note("deleted"), nullptr}, ids);

    EXPECT_TRUE(ids.created.IsSet());
    EXPECT_TRUE(ids.deleted.IsSet());
    EXPECT_TRUE(ids.updated.IsSet());
    EXPECT_EQ(pipeManager.OutputCreatedEvent().Count(), 1U);
    subject.RemoveDataSourceEventHandler(ids);
    EXPECT_EQ(pipeManager.OutputCreatedEvent().Count(), 0U);
}

TEST_F(ControlSystemInterfaceTest, ASubscriptionThatFailsHalfwayLeavesNoHandler) {
    Ids ids;
    subject.AddDataSourceEventHandler({nullptr, nullptr, Note("updated")}, ids);
    for (unsigned calls = 0; calls < 3; ++calls) {
        Tests::Faults faults;
        faults.Set("yLock_Enter", yERROR_TIMEOUT, calls);
        EXPECT_TEXTLESS_FAILURE(
            subject.AddDataSourceEventHandler({Note("created"), Note("deleted"), Note("updated")}, ids),
            yERROR_TIMEOUT);
        EXPECT_FALSE(ids.created.IsSet());
        EXPECT_EQ(pipeManager.OutputCreatedEvent().Count(), 0U);
        EXPECT_EQ(pipeManager.OutputDeletedEvent().Count(), 0U);
        EXPECT_EQ(pipeManager.OutputUpdatedEvent().Count(), 1U);
    }
    subject.RemoveDataSourceEventHandler(ids);
    EXPECT_EQ(pipeManager.OutputUpdatedEvent().Count(), 0U);
}

TEST_F(ControlSystemInterfaceTest, ADeletedDataSourceIsStillKnownToTheHandler) {
    Properties properties;
    Ids ids;
    subject.AddDataSourceEventHandler(
        {nullptr, [&](const std::string& name) { subject.DataSourceProperties(name, properties); }, nullptr}, ids);
    pipeManager.Add(Output("a"));
    pipeManager.Remove("a");
    EXPECT_EQ(properties.displayName, "Profile / Maximum");
}

TEST_F(ControlSystemInterfaceTest, AJobIsLoadedByThePersistManager) {
    LoadSavedJob();
    EXPECT_TRUE(Tests::FailureOf([&] { subject.LoadJob("second"); }).has_value());
    EXPECT_EQ(persistManager.LoadedJob(), "first.vrjob");
    subject.LoadJob("first");
    EXPECT_EQ(persistManager.LoadedJob(), "first.vrjob");
}

TEST_F(ControlSystemInterfaceTest, TheLiveJobIsAShareOfTheLoadedOne) {
    EXPECT_EQ(subject.LiveJob(), nullptr);
    LoadSavedJob();
    void* const mine = subject.LiveJob();
    void* const other = subject.LiveJob();
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(mine, other);
    yObject_Release(other);
    persistManager.LoadJob("first");
    void* const next = subject.LiveJob();
    EXPECT_NE(next, mine);
    yObject_Release(next);
    yObject_Release(mine);
}

TEST(ControlSystemInterfaceWithoutSystemTest, WhatIsntThereIsAWrongState) {
    ControlSystemInterface subject(nullptr, nullptr, nullptr);
    Stats stats;
    Properties properties;
    Ids ids;
    EXPECT_TEXTLESS_FAILURE(subject.Start(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.Stop(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.FactoryRestore(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.Restart(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.LoadJob("a"), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.Stats(stats), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.SetNextIpConfig(yIpConfig(), true), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.BlinkLed(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.AddDataSourceEventHandler(Handlers(), ids), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.RemoveDataSourceEventHandler(ids), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.DataSourceProperties("a", properties), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.LiveJob(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.LocalNodeDateTime(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.SetLocalNodeDateTime(0), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.LocalNodeNtpHost(), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.SetLocalNodeNtpHost("", true), yERROR_STATE);
    EXPECT_TEXTLESS_FAILURE(subject.LocalNodeSyncTime(""), yERROR_STATE);
}

TEST(ControlSystemInterfaceWithoutSystemTest, StatsNeedBothCoreAndJobs) {
    Tests::FakeCore core;
    ControlSystemInterface subject(&core, nullptr, nullptr);
    Stats stats;
    EXPECT_TEXTLESS_FAILURE(subject.Stats(stats), yERROR_STATE);
}
