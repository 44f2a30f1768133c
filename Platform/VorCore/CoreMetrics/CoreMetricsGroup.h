#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/CommonMetrics/NetworkIfMetrics.h"
#include "VorCommon/CommonMetrics/StorageVolumeMetrics.h"

namespace VorCore::CoreMetrics {

/// The figures of the machine. Clients get the 64-bit members by their position.
class CoreMetricsGroup : public Vor::Params::Group {
public:
    CoreMetricsGroup();

    Vor::Params::Value<unsigned long long> upTime;          ///< seconds since the machine started
    Vor::Params::Value<unsigned long long> cpuUsage;        ///< percent of all processors, 0 to 100
    Vor::Params::Value<unsigned long long> cpuCount;        ///< processors
    Vor::Params::Value<unsigned long long> memoryCapacity;  ///< bytes
    Vor::Params::Value<unsigned long long> memoryUsed;      ///< bytes
    Vor::Params::Value<unsigned long long> memoryAvailable; ///< bytes that programs can still get
    Vor::Params::Array<VorCommon::CommonMetrics::NetworkIfMetrics> networkInterfaces;
    Vor::Params::Array<VorCommon::CommonMetrics::StorageVolumeMetrics> storageVolumes;
};

} // namespace VorCore::CoreMetrics
