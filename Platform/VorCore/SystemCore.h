#pragma once

#include "VorApi/Event.h"
#include "VorCore/Core.h"
#include "VorCore/CoreMetrics/CoreMetricsGroup.h"
#include "VorCore/MachineReader.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace VorCore {

/// The core on a machine that isn't the sensor's own: it measures the machine and changes nothing of it. The scan, the
/// factory restore, the restart and the LED are functions of the application. Threads as in Core: writes on the main
/// loop; reads there, too, and on any thread while the main loop is blocked.
class SystemCore : public Core {
public:
    /// The functions run on the caller's thread and without a lock of this class. None may be empty.
    struct Environ {
        std::function<void()> startScan;
        std::function<void()> stopScan;
        std::function<void()> factoryRestore;
        std::function<void()> restart;
        std::function<void()> blinkLed;
        Vor::Event<>* preStartScan = nullptr; ///< borrowed; may be null
        Vor::Event<>* postStopScan = nullptr; ///< borrowed; may be null
        /// The volumes that hold these folders, or would hold them, are the storage volumes that are measured.
        std::vector<std::string> storageFolders;
    };

    explicit SystemCore(Environ environ);

    /// When a pre-start handler or `startScan` throws, the post-stop event is raised, no scan runs and the caller gets
    /// the exception. `live` and `record` make no difference: results are always live and never kept.
    void Start(bool live, bool record) override;
    /// A `stopScan` that throws leaves the run state as it is and raises no event. `abort` and `keepOpen` make no
    /// difference.
    void Stop(bool abort, bool keepOpen) override;
    void FactoryRestore() override { environ.factoryRestore(); }
    void Restart() override { environ.restart(); }
    void BlinkLed() override { environ.blinkLed(); }
    /// Keeps the settings until the process ends, whatever `persist`; the machine's network stays as it is.
    void SetIpAddress(const std::vector<yIpConfig>& configs, bool persist) override;
    /// The settings of the last SetIpAddress; empty before the first one.
    std::vector<yIpConfig> NextIpConfigs() const;

    /// The machine's time plus the offset of the last SetLocalNodeDateTime.
    long long LocalNodeDateTime() const override;
    /// Keeps the offset from the machine's time until the process ends; the machine's clock stays as it is.
    void SetLocalNodeDateTime(long long value) override;
    std::string LocalNodeNtpHost() const override;
    /// Keeps the host until the process ends, whatever `persist`.
    void SetLocalNodeNtpHost(const std::string& host, bool persist) override;
    /// False for an empty host. Else clears the offset: the machine's clock is used in place of every time server.
    bool LocalNodeSyncTime(const std::string& host) override;

    std::uint8_t GetRunState() const override { return scanning.load(std::memory_order_relaxed) ? 1 : 0; }
    const Vor::Properties::Structure& GetMetricsReporter() override;

private:
    void RaisePostStop();
    void RaisePostStopAndLogFailure();

    const Environ environ;
    std::atomic<bool> scanning{false};

    /// Guards the members below. No other lock is taken and no function of the application called while it is held.
    mutable std::mutex mutex;
    std::vector<yIpConfig> nextIpConfigs;
    std::string ntpHost;
    unsigned long long clockOffset = 0; ///< microseconds added to the machine's time, modulo 2^64
    MachineReader reader;
    CoreMetrics::CoreMetricsGroup metrics;
};

} // namespace VorCore
