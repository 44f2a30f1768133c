#include "VorCore/MachineReader.h"

#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

namespace VorCore {
namespace {

using VorCommon::CommonMetrics::LinkState;

/// A folder in the place of the machine's root.
class MachineReaderTest : public testing::Test {
protected:
    void Write(const std::string& name, const std::string& content) const {
        const std::filesystem::path path = root.Path() / name;
        std::filesystem::create_directories(path.parent_path());
        Tests::WriteWholeFile(path.string(), content);
    }

    void AddInterface(const std::string& name, const std::string& type, const std::string& state,
                      const std::string& speed) const {
        const std::string folder = "sys/class/net/" + name + "/";
        Write(folder + "type", type);
        Write(folder + "operstate", state);
        Write(folder + "speed", speed);
    }

    Tests::TempFolder root;
    CoreMetrics::CoreMetricsGroup metrics;
};

TEST_F(MachineReaderTest, ReadsTheWholeSecondsSinceTheStart) {
    Write("proc/uptime", "12616.93 8814.85\n");
    MachineReader({}, root.Path()).Read(metrics);
    EXPECT_EQ(metrics.upTime.Get(), 12616U);
}

TEST_F(MachineReaderTest, CountsTheProcessors) {
    Write("proc/stat", "cpu  1 0 0 1 0 0 0 0 0 0\ncpu0 1 0 0 0 0 0 0 0 0 0\ncpu1 0 0 0 1 0 0 0 0 0 0\nintr 4 5\n");
    MachineReader({}, root.Path()).Read(metrics);
    EXPECT_EQ(metrics.cpuCount.Get(), 2U);
}

TEST_F(MachineReaderTest, UsageIsThatSinceThePreviousCall) {
    MachineReader reader({}, root.Path());
    Write("proc/stat", "cpu  1000 10 100 5000 50 1 2 3 400 0\n");
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 0U);
    // 10 + 5 + 4 + 3 + 2 + 1 busy of 100; waiting for I/O is idle, and guests are part of the first field.
    Write("proc/stat", "cpu  1010 15 104 5070 55 4 4 4 404 0\n");
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 25U);
    Write("proc/stat", "cpu  1110 15 104 5070 55 4 4 4 404 0\n");
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 100U);
}

TEST_F(MachineReaderTest, UsageStaysWhileNoTimeHasPassed) {
    MachineReader reader({}, root.Path());
    Write("proc/stat", "cpu  0 0 0 0 0 0 0 0 0 0\n");
    reader.Read(metrics);
    Write("proc/stat", "cpu  1 0 0 1 0 0 0 0 0 0\n");
    reader.Read(metrics);
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 50U);
}

TEST_F(MachineReaderTest, UsageStaysAPercentageWhenTheTimeOfWaitingGoesBack) {
    MachineReader reader({}, root.Path());
    Write("proc/stat", "cpu  100 0 0 100 100 0 0 0 0 0\n");
    reader.Read(metrics);
    Write("proc/stat", "cpu  120 0 0 100 90 0 0 0 0 0\n");
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 100U);
    Write("proc/stat", "cpu  110 0 0 200 90 0 0 0 0 0\n");
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 0U);
}

TEST_F(MachineReaderTest, ReadsMemoryInBytes) {
    Write("proc/meminfo", "MemTotal:       24684084 kB\nMemFree:        23273048 kB\nMemAvailable:   23914672 kB\n"
                          "HugePages_Total:       0\n");
    MachineReader({}, root.Path()).Read(metrics);
    EXPECT_EQ(metrics.memoryCapacity.Get(), 24684084ULL * 1024);
    EXPECT_EQ(metrics.memoryAvailable.Get(), 23914672ULL * 1024);
    EXPECT_EQ(metrics.memoryUsed.Get(), 769412ULL * 1024);
}

TEST_F(MachineReaderTest, ReadsNetworkInterfacesInOrderWithoutLoopback) {
    AddInterface("wlan0", "1\n", "down\n", "-1\n");
    AddInterface("lo", "772\n", "unknown\n", "");
    AddInterface("eth1", "1\n", "unknown\n", "");
    Write("sys/class/net/eth1/carrier", "1\n");
    AddInterface("eth0", "1\n", "up\n", "2500\n");
    Write("sys/class/net/bonding_masters", "\n");
    MachineReader({}, root.Path()).Read(metrics);
    ASSERT_EQ(metrics.networkInterfaces.Count(), 3U);
    const auto& eth0 = metrics.networkInterfaces.At(0);
    EXPECT_EQ(eth0.name.Get(), "eth0");
    EXPECT_EQ(eth0.linkState.Get(), LinkState::Up);
    EXPECT_EQ(eth0.linkSpeed.Get(), 2'500'000'000U);
    const auto& eth1 = metrics.networkInterfaces.At(1);
    EXPECT_EQ(eth1.name.Get(), "eth1");
    EXPECT_EQ(eth1.linkState.Get(), LinkState::Up);
    EXPECT_EQ(eth1.linkSpeed.Get(), 0U);
    const auto& wlan0 = metrics.networkInterfaces.At(2);
    EXPECT_EQ(wlan0.name.Get(), "wlan0");
    EXPECT_EQ(wlan0.linkState.Get(), LinkState::Down);
    EXPECT_EQ(wlan0.linkSpeed.Get(), 0U);
}

TEST_F(MachineReaderTest, ForgetsANetworkInterfaceThatIsGone) {
    MachineReader reader({}, root.Path());
    AddInterface("eth0", "1\n", "up\n", "100\n");
    AddInterface("eth1", "1\n", "up\n", "1000\n");
    reader.Read(metrics);
    ASSERT_EQ(metrics.networkInterfaces.Count(), 2U);
    std::filesystem::remove_all(root.Path() / "sys/class/net/eth0");
    reader.Read(metrics);
    ASSERT_EQ(metrics.networkInterfaces.Count(), 1U);
    EXPECT_EQ(metrics.networkInterfaces.At(0).name.Get(), "eth1");
    EXPECT_EQ(metrics.networkInterfaces.At(0).linkSpeed.Get(), 1'000'000'000U);
}

TEST_F(MachineReaderTest, WhatTheMachineDoesntReportIsZero) {
    MachineReader reader({}, root.Path());
    Write("proc/uptime", "7.00 1.00\n");
    Write("proc/stat", "cpu  0 0 0 0 0 0 0 0 0 0\ncpu0 0 0 0 0 0 0 0 0 0 0\n");
    reader.Read(metrics);
    Write("proc/stat", "cpu  1 0 0 0 0 0 0 0 0 0\ncpu0 0 0 0 0 0 0 0 0 0 0\n");
    Write("proc/meminfo", "MemTotal: 5 kB\nMemAvailable: 2 kB\n");
    reader.Read(metrics);
    EXPECT_EQ(metrics.cpuUsage.Get(), 100U);
    std::filesystem::remove_all(root.Path() / "proc");
    reader.Read(metrics);
    EXPECT_EQ(metrics.upTime.Get(), 0U);
    EXPECT_EQ(metrics.cpuUsage.Get(), 0U);
    EXPECT_EQ(metrics.cpuCount.Get(), 0U);
    EXPECT_EQ(metrics.memoryCapacity.Get(), 0U);
    EXPECT_EQ(metrics.memoryUsed.Get(), 0U);
    EXPECT_EQ(metrics.memoryAvailable.Get(), 0U);
    EXPECT_EQ(metrics.networkInterfaces.Count(), 0U);
}

TEST_F(MachineReaderTest, MeasuresTheVolumeOfAFolderOnceEvenBeforeTheFolderIsMade) {
    const std::string folder = root.Path().string();
    MachineReader({folder, folder + "/not/made/yet", folder + "/../" + root.Path().filename().string()}, root.Path())
        .Read(metrics);
    ASSERT_EQ(metrics.storageVolumes.Count(), 1U);
    const auto& volume = metrics.storageVolumes.At(0);
    EXPECT_EQ(folder.find(volume.name.Get()), 0U) << volume.name.Get();
    EXPECT_EQ(volume.capacity.Get(), std::filesystem::space(folder).capacity);
    EXPECT_LE(volume.used.Get(), volume.capacity.Get());
    EXPECT_LE(volume.available.Get(), volume.capacity.Get() - volume.used.Get());
}

TEST_F(MachineReaderTest, MeasuresTwoVolumes) {
    if (!std::filesystem::exists("/proc/self") || !std::filesystem::exists("/sys/class")) {
        GTEST_SKIP() << "/proc and /sys aren't mounted here";
    }
    MachineReader({"/proc/self", "/sys/class"}, root.Path()).Read(metrics);
    ASSERT_EQ(metrics.storageVolumes.Count(), 2U);
    EXPECT_EQ(metrics.storageVolumes.At(0).name.Get(), "/proc");
    EXPECT_EQ(metrics.storageVolumes.At(1).name.Get(), "/sys");
}

TEST_F(MachineReaderTest, ReadsThisVeryMachine) {
    MachineReader({"/"}).Read(metrics);
    EXPECT_GT(metrics.upTime.Get(), 0U);
    EXPECT_GT(metrics.cpuCount.Get(), 0U);
    EXPECT_GT(metrics.memoryCapacity.Get(), metrics.memoryAvailable.Get());
    ASSERT_EQ(metrics.storageVolumes.Count(), 1U);
    EXPECT_EQ(metrics.storageVolumes.At(0).name.Get(), "/");
}

} // namespace
} // namespace VorCore
