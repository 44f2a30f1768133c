#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "VorCommon/IRuntimeCache.h"

namespace VorCommon {
class IPlatformAttributes;
class ProblemsManager;
} // namespace VorCommon

namespace VorControl {

/// What a service can ask of the system. All services share one host, which outlives them. `serviceId` is the caller's
/// own id. Each operation runs on the caller's thread; the accessors give values that don't change.
class IControlHost {
public:
    virtual ~IControlHost() = default;

    virtual VorCommon::IPlatformAttributes& PlatformAttributes() = 0;
    virtual VorCommon::IRuntimeCache::ServiceState ProfinetServiceRunningState() const = 0;
    virtual void SetProfinetServiceRunningState(VorCommon::IRuntimeCache::ServiceState state) = 0;

    /// Whether the service gets scan results at all. Takes effect only while the service is enabled, and is false again
    /// at each enable: set it in every Start. Never call it from ProcessResultSets.
    virtual void SetForwardScanResultsToService(const std::string& serviceId, bool enable) = 0;
    /// The data sources that pass the filter; an empty list lets nothing pass. Kept while the service is disabled.
    virtual void UpdateScanResultsOutputMap(const std::string& serviceId,
                                            const std::vector<std::string>& dataSources) = 0;
    /// Whether only the data sources of the output map pass. As the forwarding, but true again at each enable.
    virtual void SetScanResultsFiltering(const std::string& serviceId, bool enable) = 0;

    virtual VorCommon::ProblemsManager* ProblemsManager() = 0;

    virtual std::uint32_t LocalNodeId() = 0;
    virtual std::uint16_t ControlChannelPort() = 0;
    virtual std::uint16_t VdpPort() = 0;
    virtual void* PipeAllocator() = 0;
};

} // namespace VorControl
