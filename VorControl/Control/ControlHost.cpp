#include "VorControl/Control/ControlHost.h"

#include <utility>

#include "VorControl/Control/IControlScanResults.h"

namespace VorControl {

ControlHost::ControlHost(IControlScanResults& scanResults, VorCommon::IPlatformAttributes& platformAttributes,
                         VorCommon::IRuntimeCache& runtimeCache, VorCommon::ProblemsManager* problemsManager,
                         std::uint32_t localNodeId, std::uint16_t controlChannelPort, std::uint16_t vdpPort,
                         void* pipeAllocator)
    : scanResults(scanResults)
    , platformAttributes(platformAttributes)
    , runtimeCache(runtimeCache)
    , problemsManager(problemsManager)
    , localNodeId(localNodeId)
    , controlChannelPort(controlChannelPort)
    , vdpPort(vdpPort)
    , pipeAllocator(pipeAllocator) {}

VorCommon::IPlatformAttributes& ControlHost::PlatformAttributes() {
    return platformAttributes;
}

VorCommon::IRuntimeCache::ServiceState ControlHost::ProfinetServiceRunningState() const {
    return runtimeCache.ProfinetServiceRunningState();
}

void ControlHost::SetProfinetServiceRunningState(VorCommon::IRuntimeCache::ServiceState state) {
    runtimeCache.SetProfinetServiceRunningState(state);
}

void ControlHost::SetForwardScanResultsToService(const std::string& serviceId, bool enable) {
    scanResults.SetForwardScanResultsToProtocol(serviceId, enable);
}

void ControlHost::UpdateScanResultsOutputMap(const std::string& serviceId,
                                             const std::vector<std::string>& dataSources) {
    scanResults.UpdateOutputMap(serviceId, dataSources);
}

void ControlHost::SetScanResultsFiltering(const std::string& serviceId, bool enable) {
    scanResults.SetScanResultsFiltering(serviceId, enable);
}

VorCommon::ProblemsManager* ControlHost::ProblemsManager() {
    return problemsManager;
}

std::uint32_t ControlHost::LocalNodeId() {
    return localNodeId;
}

std::uint16_t ControlHost::ControlChannelPort() {
    return controlChannelPort;
}

std::uint16_t ControlHost::VdpPort() {
    return vdpPort;
}

void* ControlHost::PipeAllocator() {
    return pipeAllocator;
}

Vor::Event<void*>::CallbackId ControlHost::AddScanResultHandler(const std::string& serviceId,
                                                                std::function<void(void*)> handler) {
    return scanResults.AddResultHandler(serviceId, std::move(handler));
}

void ControlHost::RemoveScanResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id) {
    scanResults.RemoveResultHandler(serviceId, id);
}

} // namespace VorControl
