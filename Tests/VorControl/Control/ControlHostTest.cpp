#include "VorControl/Control/ControlHost.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/Faults.h"
#include "Tests/Support/MainLoopThread.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Tests/Support/Signal.h"
#include "Vor/AsyncRunner.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorControl/Control/IControlResourceAdaptor.h"
#include "VorMsg/VvNullMsg.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using VorApi::EventType;
using VorControl::ControlHost;
using Properties = VorControl::IControlSystemInterface::ControlDataSourceProperties;
using ServiceState = VorCommon::IRuntimeCache::ServiceState;
using Texts = std::vector<std::string>;

namespace {

constexpr unsigned long long Timeout = 1000000;

class FakeResources : public VorControl::IControlResourceAdaptor {
public:
    void Read(const std::string& path, std::string& out, unsigned long long timeout) override {
        out = path + " " + std::to_string(timeout);
    }
};

/// The test's thread is the main loop's, and runs it step by step.
class ControlHostTest : public testing::Test {
protected:
    ControlHostTest() {
        Properties source;
        source.type = VorPipe::PipeDataType::Measurement;
        source.name = "profile/max";
        source.displayName = "Max";
        system.dataSources["profile/max"] = source;
    }

    std::unique_ptr<ControlHost> Make() {
        return std::make_unique<ControlHost>(scanResults, operations, dataCache, resources, platform, cache, &problems,
                                             scanEngine, deviceOperations, 0xFFFFFFFE, 3190, 65535, &pipe);
    }

    /// A function for data source events that notes them as texts such as "a: 1 profile/max Max 19".
    ControlHost::DataSourceEventFunction Noting(const std::string& name) {
        return [this, name](EventType type, const Properties& props) {
            events.push_back(name + ": " + std::to_string(static_cast<int>(type)) + " " + props.name + " " +
                             props.displayName + " " + std::to_string(static_cast<int>(props.type)));
        };
    }

    /// A removal that the main loop doesn't run in time, so the system still notifies the host.
    void RemoveInVain(const std::string& service) {
        std::thread([&] { host.RemoveDataSourceEventHandler(service, 0); }).join();
    }

    std::size_t Subscriptions() const {
        EXPECT_EQ(system.created.Count(), system.deleted.Count());
        EXPECT_EQ(system.created.Count(), system.updated.Count());
        return system.created.Count();
    }

    Texts NewEvents() { return std::exchange(events, {}); }

    Tests::Faults faults;
    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Tests::RecordingScanResults scanResults;
    VorCommon::PlatformAttributes platform;
    VorCommon::RuntimeCache cache;
    VorCommon::ProblemsManager problems;
    int pipe = 0;
    Tests::FakeSystemInterface system;
    Tests::FakeScanEngineInterface scanEngine;
    Tests::FakeDataCache dataCache;
    FakeResources resources;
    Texts events;
    VorControl::ControlProtocolOperations operations{system, scanEngine, cache};
    VorControl::ControlDeviceOperations deviceOperations{scanEngine};
    std::unique_ptr<ControlHost> made = Make();
    ControlHost& host = *made;
};

TEST_F(ControlHostTest, ResourcesAreReadByTheAdaptor) {
    std::string out;
    host.ReadResource("/controls", out, 7);
    EXPECT_EQ(out, "/controls 7");
}

TEST_F(ControlHostTest, GivesWhatItWasBuiltFrom) {
    VorControl::IControlHost& services = host;
    EXPECT_EQ(&services.PlatformAttributes(), &platform);
    EXPECT_EQ(services.ProblemsManager(), &problems);
    EXPECT_EQ(&services.ScanEngineInterface(), &scanEngine);
    EXPECT_EQ(&services.DeviceOperations(), &deviceOperations);
    EXPECT_EQ(services.LocalNodeId(), 0xFFFFFFFEU);
    EXPECT_EQ(services.ControlChannelPort(), 3190);
    EXPECT_EQ(services.VdpPort(), 65535);
    EXPECT_EQ(services.PipeAllocator(), &pipe);
}

TEST_F(ControlHostTest, ALockThatCannotBeMadeIsThrown) {
    faults.SetHere("yLock_Construct", -31);
    EXPECT_TEXTLESS_FAILURE(Make(), -31);
}

TEST_F(ControlHostTest, ProfinetStateIsThatOfTheRuntimeCache) {
    cache.SetProfinetServiceRunningState(ServiceState::Running);
    EXPECT_EQ(host.ProfinetServiceRunningState(), ServiceState::Running);
    host.SetProfinetServiceRunningState(ServiceState::Stopped);
    EXPECT_EQ(cache.ProfinetServiceRunningState(), ServiceState::Stopped);
}

TEST_F(ControlHostTest, ForwardsToTheScanResultsWithTheServicesId) {
    host.SetForwardScanResultsToService("a", true);
    host.SetForwardScanResultsToService("a", false);
    host.SetScanResultsFiltering("b", true);
    host.SetScanResultsFiltering("b", false);
    host.UpdateScanResultsOutputMap("c", {"x", "y"});
    EXPECT_EQ(*scanResults.calls, (Texts{"forward a on", "forward a off", "filter b on", "filter b off", "map c x y"}));
}

TEST_F(ControlHostTest, AScanResultHandlerIsAddedAndRemovedUnderItsService) {
    void* received = nullptr;
    auto callback = host.AddScanResultHandler("a", [&](void* sets) { received = sets; });
    EXPECT_TRUE(callback.IsSet());
    scanResults.event.Raise(&pipe);
    EXPECT_EQ(received, &pipe);
    host.RemoveScanResultHandler("a", callback);
    EXPECT_FALSE(callback.IsSet());
    EXPECT_EQ(*scanResults.calls, (Texts{"add a", "remove a"}));
    EXPECT_EQ(scanResults.event.Count(), 0U);
}

TEST_F(ControlHostTest, EachOperationReachesTheSystemAndEndsAtItsService) {
    int ends = 0;
    const auto run = [&](auto start) {
        Tests::Signal ended;
        auto callback = host.AddOpEndEventHandler("a", [&](int status) {
            ends += status;
            ended.Set();
        });
        EXPECT_TRUE(callback.IsSet());
        start();
        loop.RunReady();
        EXPECT_TRUE(ended.Wait());
        host.RemoveOpEndEventHandler("a", callback);
        EXPECT_FALSE(callback.IsSet());
    };
    yIpConfig config;
    config.address[0] = 9;
    run([&] { host.StartScan("a"); });
    run([&] { host.StopScan("a"); });
    run([&] { host.LoadJob("a", "job"); });
    run([&] { host.FactoryRestore("a"); });
    run([&] { host.Restart("a"); });
    run([&] { host.SetNextIpConfig("a", config, true); });
    run([&] { host.BlinkLed("a", true, false, false); });
    run([&] { host.SetLocalNodeDateTime("a", -5); });
    run([&] { host.SetLocalNodeNtpHost("a", "time.host", true); });
    EXPECT_EQ(system.NewCalls(),
              (Texts{"Start", "Stop", "LoadJob job", "FactoryRestore", "Restart", "SetNextIpConfig true", "BlinkLed",
                     "SetLocalNodeDateTime -5", "SetLocalNodeNtpHost time.host true"}));
    EXPECT_EQ(system.ipConfig, config);
    run([&] { host.ClearAlignment("a", "s1"); });
    run([&] { host.SoftwareTrigger("a", "s2"); });
    run([&] { host.BlinkLed("a", false, true, false); });
    EXPECT_EQ(scanEngine.NewCalls(), (Texts{"ClearAlignment s1", "SoftwareTrigger s2", "BlinkLed true false"}));
    run([&] {
        host.StartAlignment("a", "s3");
        loop.RunReady();
        EXPECT_EQ(scanEngine.NewCalls(), (Texts{"AlignmentCompletedEvent s3", "Alignment s3"}));
        scanEngine.completed.Raise(VorScan::AlignCompletionStatus::Succeeded);
    });
    EXPECT_EQ(ends, 13);
}

TEST_F(ControlHostTest, ARefusedOperationReachesTheService) {
    host.StartScan("a");
    EXPECT_FAILURE(host.StopScan("b"), yERROR_BUSY,
                   "Protocol b operation 1 rejected because another operation is in progress");
    EXPECT_FAILURE(host.LoadJob("b", ""), yERROR_PARAMETER, "Empty job name for action 4");
    EXPECT_FAILURE(host.StartAlignment("b", nullptr), yERROR_PARAMETER, "Missing scanner id parameter for action 2");
}

TEST_F(ControlHostTest, StatesAreThoseOfTheDataCache) {
    VorControl::IControlSystemInterface::SystemStats stats;
    stats.loadedJob = "demo.vrjob";
    dataCache.SetStats(stats);
    VorControl::IControlScanEngineInterface::ScannerStateInfo info;
    info.id = "s1";
    dataCache.SetInfo(info);
    EXPECT_EQ(host.SystemStats(5).loadedJob, "demo.vrjob");
    EXPECT_EQ(host.ScannerInfo("s1", 6).id, "s1");
    EXPECT_EQ(dataCache.NewCalls(), (Texts{"SystemStats 5", "ScannerInfo s1 6"}));
}

TEST_F(ControlHostTest, ReadsAreThoseOfTheOperations) {
    system.dateTime = 77;
    system.ntpHost = "time.host";
    system.syncTime = true;
    ASSERT_EQ(VvNullMsg_Construct(system.liveJob.Out()), yOK);
    EXPECT_EQ(host.LocalNodeDateTime(Timeout), 77);
    EXPECT_EQ(host.LocalNodeNtpHost(Timeout), "time.host");
    EXPECT_TRUE(host.LocalNodeSyncTime("other", Timeout));
    const Vor::Object job = Vor::Object::Adopt(host.LiveJob(Timeout));
    EXPECT_EQ(job.Get(), system.liveJob.Get());
    Properties out;
    host.DataSourceProperties("profile/max", out, Timeout);
    EXPECT_EQ(out.displayName, "Max");
    EXPECT_EQ(system.NewCalls(), (Texts{"LocalNodeDateTime", "LocalNodeNtpHost", "LocalNodeSyncTime other", "LiveJob",
                                        "DataSourceProperties profile/max"}));
    // Nobody runs the main loop, and the time-out is zero.
    std::thread([&] { EXPECT_EQ(host.LocalNodeDateTime(0), 0); }).join();
}

TEST_F(ControlHostTest, TheFirstServiceMakesTheSubscriptionAndTheLastEndsIt) {
    EXPECT_EQ(Subscriptions(), 0U);
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    EXPECT_EQ(Subscriptions(), 1U);
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    EXPECT_EQ(Subscriptions(), 1U);
    host.RemoveDataSourceEventHandler("a", Timeout);
    EXPECT_EQ(Subscriptions(), 1U);
    host.RemoveDataSourceEventHandler("b", Timeout);
    EXPECT_EQ(Subscriptions(), 0U);
    EXPECT_EQ(system.NewCalls(), (Texts{"AddDataSourceEventHandler", "RemoveDataSourceEventHandler"}));
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ControlHostTest, ASubscriptionThatEndedCanBeMadeAgain) {
    for (int i = 0; i < 2; ++i) {
        host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
        system.created.Raise("profile/max");
        host.RemoveDataSourceEventHandler("a", Timeout);
    }
    EXPECT_EQ(NewEvents(), Texts(2, "a: 1 profile/max Max 19"));
}

TEST_F(ControlHostTest, ASecondFunctionOfAServiceIsRefusedAndTheFirstStays) {
    host.AddDataSourceEventHandler("a", Noting("first"), Timeout);
    EXPECT_TEXTLESS_FAILURE(host.AddDataSourceEventHandler("a", Noting("second"), Timeout), yERROR_ALREADY_EXISTS);
    system.created.Raise("profile/max");
    EXPECT_EQ(NewEvents(), Texts{"first: 1 profile/max Max 19"});
    EXPECT_EQ(Subscriptions(), 1U);
}

TEST_F(ControlHostTest, RemovingAServiceWithoutAFunctionIsLoggedAndDoesNotFail) {
    host.RemoveDataSourceEventHandler("a", Timeout);
    EXPECT_EQ(log.Count(Vor::LevelError, "No data source event callback function found for service a"), 1U);
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    host.RemoveDataSourceEventHandler("a", Timeout);
    EXPECT_EQ(log.Count(Vor::LevelError, "No data source event callback function found for service a"), 2U);
    EXPECT_EQ(Subscriptions(), 1U);
}

TEST_F(ControlHostTest, EventsReachTheServicesInOrderOfIdWithTheProperties) {
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    system.created.Raise("profile/max");
    EXPECT_EQ(NewEvents(), (Texts{"a: 1 profile/max Max 19", "b: 1 profile/max Max 19"}));
    system.updated.Raise("profile/max");
    EXPECT_EQ(NewEvents(), (Texts{"a: 2 profile/max Max 19", "b: 2 profile/max Max 19"}));
    system.deleted.Raise("profile/max");
    EXPECT_EQ(NewEvents(), (Texts{"a: 3 profile/max Max 19", "b: 3 profile/max Max 19"}));
    system.NewCalls();
    system.updated.Raise("profile/max");
    EXPECT_EQ(system.NewCalls(), Texts{"DataSourceProperties profile/max"});
}

TEST_F(ControlHostTest, AServiceCannotSpoilThePropertiesOfTheNext) {
    host.AddDataSourceEventHandler(
        "a", [](EventType, Properties props) { props.name = "spoilt"; }, Timeout);
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    system.created.Raise("profile/max");
    EXPECT_EQ(NewEvents(), Texts{"b: 1 profile/max Max 19"});
}

TEST_F(ControlHostTest, ServicesHearOfTheEndOfADataSourceThatCanNoLongerBeAsked) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    system.deleted.Raise("gone");
    EXPECT_EQ(NewEvents(), (Texts{"a: 3 gone  0", "b: 3 gone  0"}));
}

TEST_F(ControlHostTest, AnEndWhosePropertiesFailOtherwiseThanByAnUnknownNameFails) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    system.OnCall([](const std::string&) { Vor::Throw(yERROR_STATE, "no pipe"); });
    EXPECT_FAILURE(system.deleted.Raise("profile/max"), yERROR_STATE, "no pipe");
    EXPECT_TRUE(NewEvents().empty());
}

TEST_F(ControlHostTest, ADataSourceThatIsThereButCannotBeAskedFailsItsEvent) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    EXPECT_FAILURE(system.created.Raise("unknown"), yERROR_NOT_FOUND, "no data source unknown");
    EXPECT_FAILURE(system.updated.Raise("unknown"), yERROR_NOT_FOUND, "no data source unknown");
    EXPECT_TRUE(NewEvents().empty());
}

TEST_F(ControlHostTest, AFunctionThatAddsOrRemovesOnesIsRefused) {
    int refused = 0;
    host.AddDataSourceEventHandler(
        "a",
        [&](EventType, const Properties&) {
            const std::string text =
                "Service b can't add or remove its data source event callback function in such a function";
            EXPECT_FAILURE(host.RemoveDataSourceEventHandler("b", Timeout), yERROR_STATE, text);
            EXPECT_FAILURE(host.AddDataSourceEventHandler("b", Noting("b"), Timeout), yERROR_STATE, text);
            if (++refused == 1) {
                system.updated.Raise("profile/max");
                EXPECT_FAILURE(host.RemoveDataSourceEventHandler("b", Timeout), yERROR_STATE, text);
                Vor::Throw(yERROR_FULL);
            }
        },
        Timeout);
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    EXPECT_TEXTLESS_FAILURE(system.created.Raise("profile/max"), yERROR_FULL);
    EXPECT_EQ(refused, 2);
    EXPECT_EQ(NewEvents(), Texts{"b: 2 profile/max Max 19"});
    host.RemoveDataSourceEventHandler("b", Timeout);
}

TEST_F(ControlHostTest, AnEventThatFindsNobodyAsksNothing) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    RemoveInVain("a");
    EXPECT_EQ(Subscriptions(), 1U);
    system.NewCalls();
    system.created.Raise("profile/max");
    system.updated.Raise("profile/max");
    system.deleted.Raise("profile/max");
    EXPECT_TRUE(system.NewCalls().empty());
    EXPECT_TRUE(NewEvents().empty());
}

TEST_F(ControlHostTest, ASubscriptionThatARemovalLeftServesTheNextServiceAndEndsWithTheHost) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    RemoveInVain("a");
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    system.created.Raise("profile/max");
    EXPECT_EQ(NewEvents(), Texts{"b: 1 profile/max Max 19"});
    RemoveInVain("b");
    EXPECT_EQ(Subscriptions(), 1U);
    made.reset();
    EXPECT_EQ(Subscriptions(), 0U);
}

TEST_F(ControlHostTest, PropertiesThatDoNotComeInTimeAreThoseOfAFreshRecord) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    Tests::Signal done;
    std::thread raiser([&] {
        system.created.Raise("profile/max");
        done.Set();
    });
    while (!done.IsSet()) {
        loop.Elapse(std::chrono::seconds(1));
        std::this_thread::yield();
    }
    raiser.join();
    EXPECT_EQ(NewEvents(), Texts{"a: 1   0"});
}

TEST_F(ControlHostTest, WhileTheMainLoopIsBlockedTheServiceIsKeptAndNothingIsSubscribed) {
    {
        const VorCommon::RuntimeCache::MainLoopBlock block(cache);
        host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    }
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Service a is not told of data source events: the main loop did not answer"),
              1U);
    EXPECT_EQ(Subscriptions(), 0U);
    EXPECT_TEXTLESS_FAILURE(host.AddDataSourceEventHandler("a", Noting("a"), Timeout), yERROR_ALREADY_EXISTS);
    host.RemoveDataSourceEventHandler("a", Timeout);
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    EXPECT_EQ(Subscriptions(), 1U);
}

TEST_F(ControlHostTest, ASubscriptionThatTheFirstServiceDidNotGetIsMadeByTheNext) {
    std::thread([&] { host.AddDataSourceEventHandler("a", Noting("a"), 0); }).join();
    EXPECT_EQ(log.Count(Vor::LevelWarning, "Service a is not told of data source events: the main loop did not answer"),
              1U);
    host.AddDataSourceEventHandler("b", Noting("b"), Timeout);
    host.AddDataSourceEventHandler("c", Noting("c"), Timeout);
    loop.RunReady();
    EXPECT_EQ(Subscriptions(), 1U);
    system.created.Raise("profile/max");
    EXPECT_EQ(NewEvents(), (Texts{"a: 1 profile/max Max 19", "b: 1 profile/max Max 19", "c: 1 profile/max Max 19"}));
}

TEST_F(ControlHostTest, ASubscriptionThatFailsLeavesOnlyTheServiceOutThatMadeIt) {
    {
        const VorCommon::RuntimeCache::MainLoopBlock block(cache);
        host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    }
    system.OnCall([](const std::string&) { Vor::Throw(yERROR_STATE, "no pipe"); });
    EXPECT_FAILURE(host.AddDataSourceEventHandler("b", Noting("b"), Timeout), yERROR_STATE, "no pipe");
    system.OnCall({});
    host.AddDataSourceEventHandler("c", Noting("c"), Timeout);
    system.created.Raise("profile/max");
    EXPECT_EQ(NewEvents(), (Texts{"a: 1 profile/max Max 19", "c: 1 profile/max Max 19"}));
}

TEST_F(ControlHostTest, ASubscriptionThatFailsLeavesTheServiceOut) {
    system.OnCall([](const std::string&) { Vor::Throw(yERROR_STATE, "no pipe"); });
    EXPECT_FAILURE(host.AddDataSourceEventHandler("a", Noting("a"), Timeout), yERROR_STATE, "no pipe");
    system.OnCall({});
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    EXPECT_EQ(Subscriptions(), 1U);
}

TEST(ControlHostThreadsTest, ServicesMayComeAndGoWhileDataSourcesDo) {
    constexpr int Rounds = 50;
    constexpr unsigned long long ShortTimeout = 2000;
    constexpr unsigned long long LongTimeout = 20 * Timeout;
    Tests::FakeSystemInterface system;
    system.dataSources["profile/max"] = {};
    Tests::FakeScanEngineInterface scanEngine;
    Tests::FakeDataCache dataCache;
    FakeResources resources;
    Tests::RecordingScanResults scanResults;
    VorCommon::PlatformAttributes platform;
    VorCommon::RuntimeCache cache;
    const Tests::MainLoopThread mainLoop;
    VorControl::ControlProtocolOperations operations(system, scanEngine, cache);
    VorControl::ControlDeviceOperations deviceOperations(scanEngine);
    ControlHost host(scanResults, operations, dataCache, resources, platform, cache, nullptr, scanEngine,
                     deviceOperations, 0, 0, 0, nullptr);
    std::atomic<int> heard = 0;
    const auto add = [&](const std::string& id, unsigned long long wait) {
        host.AddDataSourceEventHandler(
            id, [&](EventType, const Properties&) { ++heard; }, wait);
    };
    Vor::AsyncRunner pipe;
    // An event waits for the lock that a service holds while it waits for the main loop.
    const auto raise = [&] {
        system.created.Raise("profile/max");
        system.deleted.Raise("gone");
    };
    std::vector<std::thread> services;
    for (int i = 0; i < 3; ++i) {
        services.emplace_back([&, id = "s" + std::to_string(i)] {
            for (int round = 0; round < Rounds; ++round) {
                pipe.Run(raise);
                add(id, ShortTimeout);
                pipe.Run(raise);
                host.RemoveDataSourceEventHandler(id, ShortTimeout);
            }
        });
    }
    for (auto& service : services) {
        service.join();
    }
    pipe.RunAndWait([] {}, LongTimeout);
    const int before = heard;
    add("last", LongTimeout);
    pipe.RunAndWait([&] { system.created.Raise("profile/max"); }, LongTimeout);
    EXPECT_EQ(heard, before + 1);
    host.RemoveDataSourceEventHandler("last", LongTimeout);
    EXPECT_EQ(system.created.Count(), 0U);
}

TEST_F(ControlHostTest, TheHostEndsASubscriptionThatIsLeft) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    made.reset();
    EXPECT_EQ(Subscriptions(), 0U);
    EXPECT_TRUE(log.Records().empty());
}

TEST_F(ControlHostTest, AHostWithoutServicesAsksNothingWhenItGoes) {
    made.reset();
    EXPECT_TRUE(system.NewCalls().empty());
}

TEST_F(ControlHostTest, ASubscriptionThatCannotBeEndedIsLoggedWhenTheHostGoes) {
    host.AddDataSourceEventHandler("a", Noting("a"), Timeout);
    system.OnCall([](const std::string&) { Vor::Throw(yERROR_STATE, "no pipe"); });
    made.reset();
    EXPECT_EQ(log.Count(Vor::LevelError, "Exception thrown in destructor"), 1U);
    EXPECT_EQ(log.Count(Vor::LevelError, "Caught exception with status -1000: no pipe"), 1U);
}

} // namespace
