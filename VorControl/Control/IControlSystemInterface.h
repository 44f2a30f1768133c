#pragma once

#include "VorApi/Event.h"
#include "VorPipe/PipeDataType.h"
#include "yApi/yIpConfig.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace VorControl {

/// The way to the sensor's core, its jobs and its data sources. Main loop only; other threads take the operations of
/// IControlHost. Failures are Vor::Exception.
class IControlSystemInterface {
public:
    struct StorageVolumeStats {
        std::uint64_t metric0 = 0;
        std::uint64_t metric1 = 0;
        std::uint64_t metric2 = 0;
    };

    /// State and metrics of the sensor. The metrics are those of the core by their position; see
    /// VorCore::CoreMetrics::CoreMetricsGroup.
    struct SystemStats {
        std::uint64_t coreMetric0 = 0;
        std::uint64_t coreMetric1 = 0;
        std::string loadedJob; ///< file name of the job; empty when none is loaded
        std::uint8_t runState = 0;
        std::vector<int> networkIfStates;
        std::vector<unsigned long long> networkIfCounts;
        std::uint64_t coreMetric3 = 0;
        std::uint64_t coreMetric4 = 0;
        std::uint64_t coreMetric5 = 0;
        std::vector<StorageVolumeStats> storageVolumes;
    };

    struct ControlDataSourceProperties {
        VorPipe::PipeDataType type = VorPipe::PipeDataType::None;
        bool arrayed = false;
        std::string name;
        std::string displayName;
    };

    /// Called with the name of a data source. Each may be empty.
    struct DataSourceEventHandlerContainer {
        std::function<void(std::string)> created;
        std::function<void(std::string)> deleted;
        std::function<void(std::string)> updated;
    };

    struct DataSourceEventCallbackIdContainer {
        Vor::Event<std::string>::CallbackId created;
        Vor::Event<std::string>::CallbackId deleted;
        Vor::Event<std::string>::CallbackId updated;
    };

    virtual ~IControlSystemInterface() = default;

    virtual void Start() = 0;
    virtual void Stop() = 0;
    virtual void FactoryRestore() = 0;
    virtual void Restart() = 0;
    virtual void LoadJob(const std::string& name) = 0;
    /// `out` must be a fresh record: storage volumes are appended.
    virtual void Stats(SystemStats& out) = 0;
    virtual void SetNextIpConfig(const yIpConfig& config, bool flag) = 0;
    virtual void BlinkLed() = 0;
    /// Subscribes the functions that aren't empty; the ids of the others are left alone.
    virtual void AddDataSourceEventHandler(const DataSourceEventHandlerContainer& handlers,
                                           DataSourceEventCallbackIdContainer& ids) = 0;
    virtual void RemoveDataSourceEventHandler(DataSourceEventCallbackIdContainer& ids) = 0;
    /// Throws yERROR_NOT_FOUND for a data source that there isn't.
    virtual void DataSourceProperties(const std::string& name, ControlDataSourceProperties& out) = 0;
    /// A share of the loaded job's object, which the caller releases; null when none is loaded.
    virtual void* LiveJob() = 0;
    /// Microseconds since the beginning of 1970, UTC.
    virtual long long LocalNodeDateTime() = 0;
    virtual void SetLocalNodeDateTime(long long value) = 0;
    virtual std::string LocalNodeNtpHost() = 0;
    virtual void SetLocalNodeNtpHost(const std::string& host, bool flag) = 0;
    virtual bool LocalNodeSyncTime(const std::string& host) = 0;
};

} // namespace VorControl
