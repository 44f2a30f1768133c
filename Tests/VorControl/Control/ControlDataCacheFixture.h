#pragma once

#include "Tests/Support/Faults.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorControl/Control/ControlDataCache.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorControl/Control/ControlSystemInterface.h"

#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {

inline constexpr unsigned long long LongWait = 20'000'000;
inline constexpr unsigned long long ShortWait = 1'000;
inline constexpr const char* SystemFlagText = "System stats operation ended but flag was not in the InProgress state";
inline constexpr const char* ScannerFlagText = "Scanner info operation ended but flag was not in the InProgress state";
inline constexpr const char* StatsFailed = "Exception getting system stats";

/// Answers with the number of the query in each member, unless the hook throws.
class FakeSystem : public VorControl::ControlSystemInterface {
public:
    FakeSystem()
        : ControlSystemInterface(nullptr, nullptr, nullptr) {}

    std::atomic<int> queries{0};
    std::function<void()> onStats;

    void Stats(SystemStats& out) override {
        const int number = ++queries;
        EXPECT_TRUE(out.storageVolumes.empty());
        EXPECT_EQ(out.coreMetric5, 0U);
        if (onStats) {
            onStats();
        }
        const auto value = static_cast<std::uint64_t>(number);
        out = {.coreMetric0 = value,
               .coreMetric1 = value,
               .loadedJob = "job" + std::to_string(number),
               .runState = 1,
               .networkIfStates = {number},
               .networkIfCounts = {value},
               .coreMetric3 = value,
               .coreMetric4 = value,
               .coreMetric5 = value,
               .storageVolumes = {{value, value, value}}};
    }
};

/// The number of the query that returned the record; 0 for the zeroed one.
inline std::uint64_t NumberOf(const VorControl::IControlSystemInterface::SystemStats& stats) {
    const auto value = stats.coreMetric0;
    if (value == 0) {
        EXPECT_EQ(stats.loadedJob, "");
        EXPECT_EQ(stats.runState, 0);
        EXPECT_TRUE(stats.networkIfStates.empty());
        EXPECT_TRUE(stats.networkIfCounts.empty());
        EXPECT_TRUE(stats.storageVolumes.empty());
    } else {
        EXPECT_EQ(stats.loadedJob, "job" + std::to_string(value));
        EXPECT_EQ(stats.runState, 1);
        EXPECT_EQ(stats.networkIfStates, std::vector<int>{static_cast<int>(value)});
        EXPECT_EQ(stats.networkIfCounts, std::vector<unsigned long long>{value});
        EXPECT_EQ(stats.storageVolumes.size(), 1U);
        EXPECT_EQ(stats.storageVolumes.at(0).metric2, value);
    }
    EXPECT_EQ(stats.coreMetric1, value);
    EXPECT_EQ(stats.coreMetric3, value);
    EXPECT_EQ(stats.coreMetric4, value);
    EXPECT_EQ(stats.coreMetric5, value);
    return value;
}

/// Answers with the id of the argument and the number of the query.
class FakeEngines : public VorControl::ControlScanEngineInterface {
public:
    FakeEngines()
        : ControlScanEngineInterface(nullptr) {}

    std::atomic<int> queries{0};
    std::function<void()> onInfo;

    void ScannerInfo(const std::string& scannerId, ScannerStateInfo& out) override {
        const int number = ++queries;
        EXPECT_EQ(out.id, "");
        EXPECT_EQ(out.alignmentState, 0);
        EXPECT_TRUE(out.laserEnabled);
        if (onInfo) {
            onInfo();
        }
        out = {.id = scannerId.empty() ? "default" : scannerId,
               .currentEncoderValue = number,
               .currentSyncTime = static_cast<std::uint64_t>(number),
               .alignmentState = 2,
               .laserEnabled = false};
    }
};

template <class Call>
auto Elsewhere(Call call) {
    return std::async(std::launch::async, std::move(call)).get();
}

/// The main loop is this thread's, which runs it step by step.
class ControlDataCacheFixture : public testing::Test {
protected:
    ControlDataCacheFixture() { loop.RunReady(); } // what an earlier test left there

    Faults faults;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    FakeSystem system;
    FakeEngines engines;
    std::optional<VorControl::ControlDataCache> cache{std::in_place, system, engines};
    Vor::LogCapture log;

    /// As a service does it, on a thread of its own.
    std::uint64_t Poll(unsigned long long timeout = 0) {
        return Elsewhere([&] { return NumberOf(cache->SystemStats(timeout)); });
    }

    VorControl::IControlScanEngineInterface::ScannerStateInfo PollScanner(const std::string& id,
                                                                          unsigned long long timeout = 0) {
        return Elsewhere([&] { return cache->ScannerInfo(id, timeout); });
    }

    bool IsLogged(const std::string& part) const {
        for (const auto& record : log.Records()) {
            if (record.text.find(part) != std::string::npos) {
                return true;
            }
        }
        return false;
    }
};

} // namespace Tests
