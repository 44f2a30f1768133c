#include "VorCore/CoreMetrics/CoreMetricsGroup.h"

#include "Vor/JsonSerializer.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace VorCore::CoreMetrics {
namespace {

using VorCommon::CommonMetrics::LinkState;

TEST(CoreMetricsGroup, HasAllFiguresOfTheMachine) {
    CoreMetricsGroup metrics;
    metrics.upTime = 1ULL;
    metrics.cpuUsage = 2ULL;
    metrics.cpuCount = 3ULL;
    metrics.memoryCapacity = 4ULL;
    metrics.memoryUsed = 5ULL;
    metrics.memoryAvailable = 6ULL;
    auto& network = metrics.networkInterfaces.Emplace();
    network.name = std::string("eth0");
    network.linkState = LinkState::Up;
    network.linkSpeed = 7ULL;
    auto& volume = metrics.storageVolumes.Emplace();
    volume.name = std::string("/");
    volume.capacity = 8ULL;
    volume.used = 9ULL;
    volume.available = 10ULL;
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(metrics), nlohmann::json::parse(R"({
        "upTime": 1, "cpuUsage": 2, "cpuCount": 3,
        "memoryCapacity": 4, "memoryUsed": 5, "memoryAvailable": 6,
        "networkInterfaces": [{"name": "eth0", "linkState": 1, "linkSpeed": 7}],
        "storageVolumes": [{"name": "/", "capacity": 8, "used": 9, "available": 10}]
    })"));
}

TEST(CoreMetricsGroup, KeepsItsFiguresInTheirOrder) {
    const CoreMetricsGroup metrics;
    std::vector<std::string> names;
    for (const auto& member : metrics.Members()) {
        names.push_back(member.Text());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"upTime", "cpuUsage", "cpuCount", "memoryCapacity", "memoryUsed",
                                               "memoryAvailable", "networkInterfaces", "storageVolumes"}));
}

TEST(CoreMetricsGroup, BeginsWithNothing) {
    const CoreMetricsGroup metrics;
    EXPECT_EQ(metrics.upTime.Get(), 0U);
    EXPECT_EQ(metrics.networkInterfaces.Count(), 0U);
    EXPECT_EQ(metrics.storageVolumes.Count(), 0U);
    const VorCommon::CommonMetrics::NetworkIfMetrics network;
    EXPECT_EQ(network.linkState.Get(), LinkState::Down);
}

} // namespace
} // namespace VorCore::CoreMetrics
