#pragma once

#include "VorCore/Core.h"
#include "VorCore/CoreMetrics/CoreMetricsGroup.h"

#include <string>
#include <vector>

namespace Tests {

/// Records its calls, and returns the values that a test sets.
class FakeCore : public VorCore::Core {
public:
    std::vector<std::string> calls;
    std::vector<yIpConfig> ipConfigs; ///< of SetIpAddress
    long long dateTime = 0;
    std::string ntpHost;
    bool syncs = true;
    std::uint8_t runState = 0;
    VorCore::CoreMetrics::CoreMetricsGroup metrics;
    const Vor::Properties::Structure* reporter = &metrics;

    void Start(bool live, bool record) override { Note("Start " + Text(live) + " " + Text(record)); }
    void Stop(bool abort, bool keepOpen) override { Note("Stop " + Text(abort) + " " + Text(keepOpen)); }
    void FactoryRestore() override { Note("FactoryRestore"); }
    void Restart() override { Note("Restart"); }
    void BlinkLed() override { Note("BlinkLed"); }

    void SetIpAddress(const std::vector<yIpConfig>& configs, bool persist) override {
        ipConfigs = configs;
        Note("SetIpAddress " + Text(persist));
    }

    long long LocalNodeDateTime() const override { return dateTime; }
    void SetLocalNodeDateTime(long long value) override { dateTime = value; }
    std::string LocalNodeNtpHost() const override { return ntpHost; }

    void SetLocalNodeNtpHost(const std::string& host, bool persist) override {
        ntpHost = host;
        Note("SetLocalNodeNtpHost " + Text(persist));
    }

    bool LocalNodeSyncTime(const std::string& host) override {
        Note("LocalNodeSyncTime " + host);
        return syncs;
    }

    std::uint8_t GetRunState() const override { return runState; }
    const Vor::Properties::Structure& GetMetricsReporter() override { return *reporter; }

private:
    static std::string Text(bool value) { return value ? "true" : "false"; }
    void Note(const std::string& call) { calls.push_back(call); }
};

} // namespace Tests
