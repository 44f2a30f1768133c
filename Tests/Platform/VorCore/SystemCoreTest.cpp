#include "VorCore/SystemCore.h"

#include "Tests/Support/Failure.h"
#include "Vor/Logging.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace VorCore {
namespace {

/// A core whose calls are noted in order.
class SystemCoreTest : public testing::Test {
protected:
    SystemCoreTest() {
        preStart.Add([this] { Note("preStart", preStartFails); });
        postStop.Add([this] { Note("postStop", postStopFails); });
    }

    void Note(const std::string& call, bool fails) {
        calls.push_back(call);
        if (fails) {
            Vor::Throw(yERROR_PARAMETER, "%s is broken", call);
        }
    }

    SystemCore::Environ Environ() {
        return {.startScan = [this] { Note("start", startFails); },
                .stopScan = [this] { Note("stop", stopFails); },
                .factoryRestore = [this] { Note("factoryRestore", false); },
                .restart = [this] { Note("restart", false); },
                .blinkLed = [this] { Note("blinkLed", true); },
                .preStartScan = &preStart,
                .postStopScan = &postStop,
                .storageFolders = {"/"}};
    }

    static long long MachineTime() {
        return std::chrono::duration_cast<std::chrono::microseconds>(
                   std::chrono::system_clock::now().time_since_epoch())
            .count();
    }

    using Calls = std::vector<std::string>;
    Calls calls;
    bool preStartFails = false;
    bool startFails = false;
    bool stopFails = false;
    bool postStopFails = false;
    Vor::Event<> preStart;
    Vor::Event<> postStop;
    SystemCore core{Environ()};
};

TEST_F(SystemCoreTest, RaisesTheStartEventBeforeTheStartAndTheStopEventAfterTheStop) {
    EXPECT_EQ(core.GetRunState(), 0);
    core.Start(true, false);
    EXPECT_EQ(core.GetRunState(), 1);
    core.Stop(false, false);
    EXPECT_EQ(core.GetRunState(), 0);
    EXPECT_EQ(calls, (Calls{"preStart", "start", "stop", "postStop"}));
}

TEST_F(SystemCoreTest, LeavesARunningScanAndAStandingOneAsTheyAre) {
    core.Stop(false, false);
    EXPECT_EQ(calls, Calls());
    core.Start(true, false);
    core.Start(true, false);
    core.Stop(false, false);
    core.Stop(false, false);
    EXPECT_EQ(calls, (Calls{"preStart", "start", "stop", "postStop"}));
    core.Start(true, false);
    EXPECT_EQ(core.GetRunState(), 1);
}

TEST_F(SystemCoreTest, AStartThatFailsStartsNoScanAndRaisesThePostStopEvent) {
    startFails = true;
    EXPECT_FAILURE(core.Start(true, false), yERROR_PARAMETER, "start is broken");
    EXPECT_EQ(core.GetRunState(), 0);
    EXPECT_EQ(calls, (Calls{"preStart", "start", "postStop"}));
    startFails = false;
    core.Start(true, false);
    EXPECT_EQ(core.GetRunState(), 1);
}

TEST_F(SystemCoreTest, APreStartHandlerThatFailsKeepsTheScanFromStarting) {
    preStartFails = true;
    EXPECT_FAILURE(core.Start(true, false), yERROR_PARAMETER, "preStart is broken");
    EXPECT_EQ(core.GetRunState(), 0);
    EXPECT_EQ(calls, (Calls{"preStart", "postStop"}));
}

TEST_F(SystemCoreTest, TheFailureOfAStartOutweighsThatOfTakingItBack) {
    startFails = true;
    postStopFails = true;
    const Vor::LogCapture log;
    EXPECT_FAILURE(core.Start(true, false), yERROR_PARAMETER, "start is broken");
    EXPECT_EQ(core.GetRunState(), 0);
    EXPECT_TRUE(log.Contains(Vor::LevelError, "Reporting that the scan hasn't started failed."));
}

TEST_F(SystemCoreTest, AStopThatFailsLeavesTheRunState) {
    core.Start(true, false);
    stopFails = true;
    calls.clear();
    EXPECT_FAILURE(core.Stop(false, false), yERROR_PARAMETER, "stop is broken");
    EXPECT_EQ(core.GetRunState(), 1);
    EXPECT_EQ(calls, Calls{"stop"});
}

TEST_F(SystemCoreTest, APostStopHandlerThatFailsDoesntKeepTheScanRunning) {
    core.Start(true, false);
    postStopFails = true;
    EXPECT_FAILURE(core.Stop(false, false), yERROR_PARAMETER, "postStop is broken");
    EXPECT_EQ(core.GetRunState(), 0);
}

TEST_F(SystemCoreTest, DoesWithoutEvents) {
    auto environ = Environ();
    environ.preStartScan = nullptr;
    environ.postStopScan = nullptr;
    SystemCore quiet(environ);
    quiet.Start(true, false);
    quiet.Stop(false, false);
    EXPECT_EQ(calls, (Calls{"start", "stop"}));
}

TEST_F(SystemCoreTest, HandsOrdersToTheApplicationAndItsFailuresBack) {
    core.FactoryRestore();
    core.Restart();
    EXPECT_FAILURE(core.BlinkLed(), yERROR_PARAMETER, "blinkLed is broken");
    EXPECT_EQ(calls, (Calls{"factoryRestore", "restart", "blinkLed"}));
}

TEST_F(SystemCoreTest, KeepsTheNetworkSettingsForTheNextStart) {
    EXPECT_TRUE(core.NextIpConfigs().empty());
    yIpConfig config;
    config.address[15] = 7;
    core.SetIpAddress({config}, true);
    EXPECT_EQ(core.NextIpConfigs(), std::vector<yIpConfig>{config});
    core.SetIpAddress({}, false);
    EXPECT_TRUE(core.NextIpConfigs().empty());
}

TEST_F(SystemCoreTest, ReturnsTheTimeOfTheMachineUntilItIsSet) {
    const long long before = MachineTime();
    const long long reported = core.LocalNodeDateTime();
    EXPECT_GE(reported, before);
    EXPECT_LE(reported, MachineTime());
}

TEST_F(SystemCoreTest, ATimeThatIsSetGoesOnAndLeavesTheMachinesClock) {
    constexpr long long Year2000 = 946'684'800'000'000;
    const long long before = MachineTime();
    core.SetLocalNodeDateTime(Year2000);
    const long long reported = core.LocalNodeDateTime();
    const long long passed = MachineTime() - before;
    EXPECT_GE(reported, Year2000);
    EXPECT_LE(reported, Year2000 + passed);
    EXPECT_LT(passed, 60'000'000);
}

TEST_F(SystemCoreTest, AcceptsAnyTime) {
    for (const long long time : {0LL, -1'000'000'000LL, std::numeric_limits<long long>::min()}) {
        core.SetLocalNodeDateTime(time);
        const long long reported = core.LocalNodeDateTime();
        EXPECT_GE(reported, time);
        EXPECT_LT(reported, time + 60'000'000);
    }
}

TEST_F(SystemCoreTest, ASynchronisationBringsBackTheTimeOfTheMachine) {
    core.SetLocalNodeDateTime(0);
    EXPECT_FALSE(core.LocalNodeSyncTime(""));
    EXPECT_LT(core.LocalNodeDateTime(), 60'000'000);
    const long long before = MachineTime();
    EXPECT_TRUE(core.LocalNodeSyncTime("time.example"));
    EXPECT_GE(core.LocalNodeDateTime(), before);
}

TEST_F(SystemCoreTest, KeepsTheTimeServer) {
    EXPECT_EQ(core.LocalNodeNtpHost(), "");
    core.SetLocalNodeNtpHost("time.example", true);
    EXPECT_EQ(core.LocalNodeNtpHost(), "time.example");
    core.SetLocalNodeNtpHost("", false);
    EXPECT_EQ(core.LocalNodeNtpHost(), "");
}

TEST_F(SystemCoreTest, ReportsTheMetricsOfTheMachine) {
    const auto& metrics = dynamic_cast<const CoreMetrics::CoreMetricsGroup&>(core.GetMetricsReporter());
    EXPECT_GT(metrics.upTime.Get(), 0U);
    EXPECT_GT(metrics.memoryCapacity.Get(), 0U);
    ASSERT_EQ(metrics.storageVolumes.Count(), 1U);
    EXPECT_GT(metrics.storageVolumes.At(0).capacity.Get(), 0U);
    EXPECT_EQ(&core.GetMetricsReporter(), &metrics);
}

TEST_F(SystemCoreTest, IsReadOnAnotherThreadWhileItChanges) {
    std::atomic<bool> done{false};
    std::atomic<bool> wrong{false};
    std::thread reader([&] {
        while (!done) {
            const std::string host = core.LocalNodeNtpHost();
            if ((!host.empty() && host != std::string(100, 'a')) || core.NextIpConfigs().size() > 1 ||
                core.GetRunState() > 1 || core.LocalNodeDateTime() < 0) {
                wrong = true;
            }
        }
    });
    for (int round = 0; round < 200; ++round) {
        core.Start(true, false);
        core.SetLocalNodeNtpHost(round % 2 == 0 ? std::string(100, 'a') : "", true);
        core.SetIpAddress(std::vector<yIpConfig>(round % 2), true);
        core.SetLocalNodeDateTime(round);
        core.Stop(false, false);
    }
    done = true;
    reader.join();
    EXPECT_FALSE(wrong);
}

} // namespace
} // namespace VorCore
