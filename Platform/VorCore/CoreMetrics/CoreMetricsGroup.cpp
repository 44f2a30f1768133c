#include "VorCore/CoreMetrics/CoreMetricsGroup.h"

namespace VorCore::CoreMetrics {

CoreMetricsGroup::CoreMetricsGroup() {
    const auto setUnits = [](auto& value, const char* units) {
        value.EnableUnits(true);
        value.SetUnits(units);
    };
    setUnits(upTime, "s");
    setUnits(cpuUsage, "%");
    setUnits(memoryCapacity, "B");
    setUnits(memoryUsed, "B");
    setUnits(memoryAvailable, "B");
    Register("upTime", upTime, "Up Time");
    Register("cpuUsage", cpuUsage, "Processor Usage");
    Register("cpuCount", cpuCount, "Processor Count");
    Register("memoryCapacity", memoryCapacity, "Memory Capacity");
    Register("memoryUsed", memoryUsed, "Memory Used");
    Register("memoryAvailable", memoryAvailable, "Memory Available");
    Register("networkInterfaces", networkInterfaces, "Network Interfaces");
    Register("storageVolumes", storageVolumes, "Storage Volumes");
}

} // namespace VorCore::CoreMetrics
