#pragma once

#include "VorApi/Event.h"
#include "VorPipe/PipeDataType.h"
#include "yApi/yIpConfig.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace VorControl {

/// Access to the sensor's core, its jobs and its data sources. Main loop only; other threads use the operations of
/// IControlHost. Failures are Vor::Exception.
class IControlSystemInterface {
public:
    struct StorageVolumeStats {
        std::uint64_t metric0 = 0; ///< capacity in bytes
        std::uint64_t metric1 = 0; ///< bytes in use
        std::uint64_t metric2 = 0; ///< bytes that can still be written
    };

    /// State and metrics of the sensor. Each core metric has the number of its position in
    /// VorCore::CoreMetrics::CoreMetricsGroup.
    struct SystemStats {
        std::uint64_t coreMetric0 = 0;                   ///< seconds since the machine started
        std::uint64_t coreMetric1 = 0;                   ///< percent of all processors, 0 to 100
        std::string loadedJob;                           ///< file name of the job; empty when none is loaded
        std::uint8_t runState = 0;                       ///< 0 ready, 1 scanning
        std::vector<int> networkIfStates;                ///< of each network interface: 0 down, 1 up
        std::vector<unsigned long long> networkIfCounts; ///< of each network interface: bits a second, 0 when unknown
        std::uint64_t coreMetric3 = 0;                   ///< memory capacity in bytes
        std::uint64_t coreMetric4 = 0;                   ///< bytes of memory in use
        std::uint64_t coreMetric5 = 0;                   ///< bytes of memory that programs can still get
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
    /// `flag`: whether the core keeps the settings beyond the next start.
    virtual void SetNextIpConfig(const yIpConfig& config, bool flag) = 0;
    virtual void BlinkLed() = 0;
    /// Subscribes the functions that aren't empty; the ids of the others don't change.
    virtual void AddDataSourceEventHandler(const DataSourceEventHandlerContainer& handlers,
                                           DataSourceEventCallbackIdContainer& ids) = 0;
    virtual void RemoveDataSourceEventHandler(DataSourceEventCallbackIdContainer& ids) = 0;
    /// Throws yERROR_NOT_FOUND for an unknown data source.
    virtual void DataSourceProperties(const std::string& name, ControlDataSourceProperties& out) = 0;
    /// A share of the loaded job's object, which the caller releases; null when none is loaded.
    virtual void* LiveJob() = 0;
    /// Microseconds since the beginning of 1970, UTC.
    virtual long long LocalNodeDateTime() = 0;
    virtual void SetLocalNodeDateTime(long long value) = 0;
    virtual std::string LocalNodeNtpHost() = 0;
    /// `flag`: whether the core keeps the host for later starts.
    virtual void SetLocalNodeNtpHost(const std::string& host, bool flag) = 0;
    virtual bool LocalNodeSyncTime(const std::string& host) = 0;
};

} // namespace VorControl
