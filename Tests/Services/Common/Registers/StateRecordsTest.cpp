#include "Services/Common/Registers/StateRecords.h"

#include <limits>

#include <gtest/gtest.h>

namespace Services::Common {
namespace {

using VorControl::IControlScanEngineInterface;
using VorControl::IControlSystemInterface;

TEST(StateRecords, TellOfTheSystem) {
    IControlSystemInterface::SystemStats stats;
    stats.coreMetric0 = 12345;
    stats.coreMetric1 = 37;
    stats.runState = 1;
    stats.loadedJob = "demo.vrjob";
    const auto state = SystemState(stats);
    EXPECT_EQ(state.stateValue, 12345u);
    EXPECT_EQ(state.firstStateByte, 1);
    EXPECT_EQ(state.secondStateByte, 0);
    EXPECT_EQ(state.thirdStateByte, 37);
    EXPECT_EQ(state.jobFileNameLength, 10);
    EXPECT_STREQ(state.jobFileName.data(), "demo.vrjob");
}

TEST(StateRecords, CutAJobNameAfter64Characters) {
    IControlSystemInterface::SystemStats stats;
    stats.loadedJob = std::string(64, 'a') + "b";
    const auto state = SystemState(stats);
    EXPECT_EQ(state.jobFileNameLength, 64);
    EXPECT_EQ(std::string(state.jobFileName.begin(), state.jobFileName.end()), std::string(64, 'a'));
}

TEST(StateRecords, NeverShowMoreThanTheWholeProcessor) {
    IControlSystemInterface::SystemStats stats;
    stats.coreMetric1 = 256;
    EXPECT_EQ(SystemState(stats).thirdStateByte, 100);
}

TEST(StateRecords, TellOfTheScanner) {
    IControlScanEngineInterface::ScannerStateInfo info;
    info.currentEncoderValue = std::numeric_limits<std::int64_t>::min();
    info.currentSyncTime = std::numeric_limits<std::uint64_t>::max();
    info.alignmentState = 2;
    info.laserEnabled = true;
    const auto state = ScannerState(info);
    EXPECT_EQ(state.signedScannerValue, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(state.unsignedScannerValue, std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(state.firstScannerByte, 2);
    EXPECT_EQ(state.secondScannerByte, 1);
    info.laserEnabled = false;
    EXPECT_EQ(ScannerState(info).secondScannerByte, 0);
}

} // namespace
} // namespace Services::Common
