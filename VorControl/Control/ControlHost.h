#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VorApi/Event.h"
#include "VorControl/Control/IControlHost.h"

namespace VorControl {

class IControlScanResults;

/// The one host of all services. It borrows everything that it is given.
class ControlHost : public IControlHost {
public:
    ControlHost(IControlScanResults& scanResults, VorCommon::IPlatformAttributes& platformAttributes,
                VorCommon::IRuntimeCache& runtimeCache, VorCommon::ProblemsManager* problemsManager,
                std::uint32_t localNodeId, std::uint16_t controlChannelPort, std::uint16_t vdpPort,
                void* pipeAllocator);

    ControlHost(const ControlHost&) = delete;
    ControlHost& operator=(const ControlHost&) = delete;

    VorCommon::IPlatformAttributes& PlatformAttributes() override;
    VorCommon::IRuntimeCache::ServiceState ProfinetServiceRunningState() const override;
    void SetProfinetServiceRunningState(VorCommon::IRuntimeCache::ServiceState state) override;

    void SetForwardScanResultsToService(const std::string& serviceId, bool enable) override;
    void UpdateScanResultsOutputMap(const std::string& serviceId, const std::vector<std::string>& dataSources) override;
    void SetScanResultsFiltering(const std::string& serviceId, bool enable) override;

    VorCommon::ProblemsManager* ProblemsManager() override;

    std::uint32_t LocalNodeId() override;
    std::uint16_t ControlChannelPort() override;
    std::uint16_t VdpPort() override;
    void* PipeAllocator() override;

    /// For ProtocolBase: a service has one handler, and its results arrive on a thread of its own.
    Vor::Event<void*>::CallbackId AddScanResultHandler(const std::string& serviceId,
                                                       std::function<void(void*)> handler);
    /// Clears the id. Waits for a batch that is being processed.
    void RemoveScanResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id);

private:
    IControlScanResults& scanResults;
    VorCommon::IPlatformAttributes& platformAttributes;
    VorCommon::IRuntimeCache& runtimeCache;
    VorCommon::ProblemsManager* problemsManager;
    std::uint32_t localNodeId;
    std::uint16_t controlChannelPort;
    std::uint16_t vdpPort;
    void* pipeAllocator;
};

} // namespace VorControl
