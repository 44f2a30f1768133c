#include "VorControl/Control/ControlHost.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/RecordingScanResults.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VorControl::ControlHost;
using ServiceState = VorCommon::IRuntimeCache::ServiceState;

namespace {

class ControlHostTest : public testing::Test {
protected:
    Tests::RecordingScanResults scanResults;
    VorCommon::PlatformAttributes platform;
    VorCommon::RuntimeCache cache;
    VorCommon::ProblemsManager problems;
    int pipe = 0;
    Tests::FakeSystemInterface system;
    Tests::FakeScanEngineInterface scanEngine;
    Tests::FakeDataCache dataCache;
    VorControl::ControlProtocolOperations operations{system, scanEngine, cache};
    ControlHost host{scanResults, operations, dataCache, platform, cache, &problems,
                     scanEngine,  0xFFFFFFFE, 3190,      65535,    &pipe};
};

TEST_F(ControlHostTest, GivesWhatItWasBuiltFrom) {
    VorControl::IControlHost& services = host;
    EXPECT_EQ(&services.PlatformAttributes(), &platform);
    EXPECT_EQ(services.ProblemsManager(), &problems);
    EXPECT_EQ(services.LocalNodeId(), 0xFFFFFFFEU);
    EXPECT_EQ(services.ControlChannelPort(), 3190);
    EXPECT_EQ(services.VdpPort(), 65535);
    EXPECT_EQ(services.PipeAllocator(), &pipe);
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
    EXPECT_EQ(*scanResults.calls,
              (std::vector<std::string>{"forward a on", "forward a off", "filter b on", "filter b off", "map c x y"}));
}

TEST_F(ControlHostTest, AScanResultHandlerIsAddedAndRemovedUnderItsService) {
    void* received = nullptr;
    auto callback = host.AddScanResultHandler("a", [&](void* sets) { received = sets; });
    EXPECT_TRUE(callback.IsSet());
    scanResults.event.Raise(&pipe);
    EXPECT_EQ(received, &pipe);
    host.RemoveScanResultHandler("a", callback);
    EXPECT_FALSE(callback.IsSet());
    EXPECT_EQ(*scanResults.calls, (std::vector<std::string>{"add a", "remove a"}));
    EXPECT_EQ(scanResults.event.Count(), 0U);
}

} // namespace
