#include "VorControl/Control/ControlHost.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "VorControl/Control/ControlProtocolOperations.h"
#include "VorControl/Control/IControlDataCache.h"
#include "VorControl/Control/IControlResourceAdaptor.h"
#include "VorControl/Control/IControlScanResults.h"
#include "yApi/yStatus.h"

#include <utility>

namespace VorControl {

using DataSourceProps = IControlSystemInterface::ControlDataSourceProperties;

namespace {

constexpr unsigned long long OwnTimeout = 1000000; ///< microseconds
constexpr VorPipe::PipeDataType TypeNotRead = static_cast<VorPipe::PipeDataType>(10);

} // namespace

ControlHost::ControlHost(IControlScanResults& scanResults, ControlProtocolOperations& protocolOperations,
                         IControlDataCache& dataCache, IControlResourceAdaptor& resourceAdaptor,
                         VorCommon::IPlatformAttributes& platformAttributes, VorCommon::IRuntimeCache& runtimeCache,
                         VorCommon::ProblemsManager* problemsManager, IControlScanEngineInterface& scanEngineInterface,
                         IControlDeviceOperations& deviceOperations, std::uint32_t localNodeId,
                         std::uint16_t controlChannelPort, std::uint16_t vdpPort, void* pipeAllocator)
    : scanResults(scanResults)
    , protocolOperations(protocolOperations)
    , dataCache(dataCache)
    , resourceAdaptor(resourceAdaptor)
    , platformAttributes(platformAttributes)
    , runtimeCache(runtimeCache)
    , problemsManager(problemsManager)
    , scanEngineInterface(scanEngineInterface)
    , deviceOperations(deviceOperations)
    , localNodeId(localNodeId)
    , controlChannelPort(controlChannelPort)
    , vdpPort(vdpPort)
    , pipeAllocator(pipeAllocator) {
    dataSourceHandlers.created = [this](const std::string& name) { DataSourceCreatedEventHandler(name); };
    dataSourceHandlers.deleted = [this](const std::string& name) { DataSourceDeletedEventHandler(name); };
    dataSourceHandlers.updated = [this](const std::string& name) { DataSourceUpdatedEventHandler(name); };
    Vor::ThrowIfFailed(yLock_Construct(lock.Out()));
}

ControlHost::~ControlHost() {
    Vor::CleanUp([this] {
        const Vor::Locker locker(lock.Get());
        if (!serviceMap.empty() || dataSourceCallbackIds.created.IsSet()) {
            protocolOperations.RemoveDataSourceEventHandler(dataSourceCallbackIds, OwnTimeout);
        }
    });
}

void ControlHost::StartScan(const std::string& serviceId) {
    protocolOperations.StartScan(serviceId);
}

void ControlHost::StopScan(const std::string& serviceId) {
    protocolOperations.StopScan(serviceId);
}

void ControlHost::StartAlignment(const std::string& serviceId, const char* scannerId) {
    protocolOperations.Alignment(serviceId, scannerId);
}

void ControlHost::ClearAlignment(const std::string& serviceId, const char* scannerId) {
    protocolOperations.ClearAlignment(serviceId, scannerId);
}

void ControlHost::LoadJob(const std::string& serviceId, const char* job) {
    protocolOperations.LoadJob(serviceId, job);
}

void ControlHost::SoftwareTrigger(const std::string& serviceId, const char* scannerId) {
    protocolOperations.SoftwareTrigger(serviceId, scannerId);
}

void ControlHost::FactoryRestore(const std::string& serviceId) {
    protocolOperations.FactoryRestore(serviceId);
}

void ControlHost::Restart(const std::string& serviceId) {
    protocolOperations.Restart(serviceId);
}

void ControlHost::SetNextIpConfig(const std::string& serviceId, const yIpConfig& config, bool flag) {
    protocolOperations.SetNextIpConfig(serviceId, config, flag);
}

void ControlHost::BlinkLed(const std::string& serviceId, bool systemLed, bool ledBlinkEnabled, bool ledLightOn) {
    protocolOperations.BlinkLed(serviceId, systemLed, ledBlinkEnabled, ledLightOn);
}

IControlSystemInterface::SystemStats ControlHost::SystemStats(unsigned long long timeout) {
    return dataCache.SystemStats(timeout);
}

IControlScanEngineInterface::ScannerStateInfo ControlHost::ScannerInfo(const std::string& scannerId,
                                                                       unsigned long long timeout) {
    return dataCache.ScannerInfo(scannerId, timeout);
}

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

void ControlHost::AddDataSourceEventHandler(const std::string& serviceId, const DataSourceEventFunction& function,
                                            unsigned long long timeout) {
    const Vor::Locker locker(lock.Get());
    CheckNotNotifying(serviceId);
    if (serviceMap.contains(serviceId)) {
        Vor::Throw(yERROR_ALREADY_EXISTS);
    }
    if (!serviceMap.emplace(serviceId, function).second) {
        Vor::Throw(yERROR, "Unable to insert data source event callback function for service %s", serviceId);
    }
    if (!dataSourceCallbackIds.created.IsSet()) {
        Subscribe(serviceId, timeout);
    }
}

void ControlHost::CheckNotNotifying(const std::string& serviceId) const {
    if (notifying) {
        Vor::Throw(yERROR_STATE,
                   "Service %s can't add or remove its data source event callback function in such a function",
                   serviceId);
    }
}

void ControlHost::Subscribe(const std::string& serviceId, unsigned long long timeout) {
    try {
        protocolOperations.AddDataSourceEventHandler(dataSourceHandlers, dataSourceCallbackIds, timeout);
    } catch (...) {
        serviceMap.erase(serviceId);
        throw;
    }
    if (!dataSourceCallbackIds.created.IsSet()) {
        Vor::LogWarning("Service %s is not told of data source events: the main loop did not answer", serviceId);
    }
}

void ControlHost::RemoveDataSourceEventHandler(const std::string& serviceId, unsigned long long timeout) {
    const Vor::Locker locker(lock.Get());
    CheckNotNotifying(serviceId);
    if (!serviceMap.contains(serviceId)) {
        Vor::LogError("No data source event callback function found for service %s", serviceId);
        return;
    }
    if (serviceMap.erase(serviceId) != 1) {
        Vor::LogError("Failed to remove data source event callback function for service %s", serviceId);
        return;
    }
    if (serviceMap.empty()) {
        protocolOperations.RemoveDataSourceEventHandler(dataSourceCallbackIds, timeout);
    }
}

void ControlHost::DataSourceCreatedEventHandler(const std::string& name) {
    CallServiceDataSourceEventHandler(VorApi::EventType::Created, name);
}

void ControlHost::DataSourceDeletedEventHandler(const std::string& name) {
    CallServiceDataSourceEventHandler(VorApi::EventType::Deleted, name);
}

void ControlHost::DataSourceUpdatedEventHandler(const std::string& name) {
    CallServiceDataSourceEventHandler(VorApi::EventType::Updated, name);
}

void ControlHost::CallServiceDataSourceEventHandler(VorApi::EventType type, const std::string& name) {
    const Vor::Locker locker(lock.Get());
    if (serviceMap.empty()) {
        return;
    }
    const DataSourceProps props = PropertiesForEvent(type, name);
    const Vor::AtScopeEnd notified([this, outer = std::exchange(notifying, true)] { notifying = outer; });
    for (const auto& entry : serviceMap) {
        entry.second(type, props);
    }
}

DataSourceProps ControlHost::PropertiesForEvent(VorApi::EventType type, const std::string& name) {
    DataSourceProps props;
    props.type = TypeNotRead;
    try {
        DataSourceProperties(name, props, OwnTimeout);
    } catch (const Vor::Exception& e) {
        if (type != VorApi::EventType::Deleted || e.Status() != yERROR_NOT_FOUND) {
            throw;
        }
        // A deleted data source has no properties any more. The services are notified of the deletion all the same.
        props = DataSourceProps{};
        props.name = name;
    }
    return props;
}

void ControlHost::DataSourceProperties(const std::string& name, DataSourceProps& out, unsigned long long timeout) {
    protocolOperations.DataSourceProperties(name, out, timeout);
}

void* ControlHost::LiveJob(unsigned long long timeout) {
    return protocolOperations.LiveJob(timeout);
}

VorCommon::ProblemsManager* ControlHost::ProblemsManager() {
    return problemsManager;
}

void ControlHost::ReadResource(const std::string& path, std::string& out, unsigned long long timeout) {
    resourceAdaptor.Read(path, out, timeout);
}

IControlScanEngineInterface& ControlHost::ScanEngineInterface() {
    return scanEngineInterface;
}

IControlDeviceOperations& ControlHost::DeviceOperations() {
    return deviceOperations;
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

long long ControlHost::LocalNodeDateTime(unsigned long long timeout) {
    return protocolOperations.LocalNodeDateTime(timeout);
}

void ControlHost::SetLocalNodeDateTime(const std::string& serviceId, long long dateTime) {
    protocolOperations.SetLocalNodeDateTime(serviceId, dateTime);
}

std::string ControlHost::LocalNodeNtpHost(unsigned long long timeout) {
    return protocolOperations.LocalNodeNtpHost(timeout);
}

void ControlHost::SetLocalNodeNtpHost(const std::string& serviceId, const std::string& host, bool flag) {
    protocolOperations.SetLocalNodeNtpHost(serviceId, host, flag);
}

bool ControlHost::LocalNodeSyncTime(const std::string& host, unsigned long long timeout) {
    return protocolOperations.LocalNodeSyncTime(host, timeout);
}

Vor::Event<int>::CallbackId ControlHost::AddOpEndEventHandler(const std::string& serviceId,
                                                              std::function<void(int)> handler) {
    return protocolOperations.AddOpEndEventHandler(serviceId, std::move(handler));
}

std::uint64_t ControlHost::BeginOfLastTrigger(const std::string& serviceId) const {
    return protocolOperations.BeginOfLastTrigger(serviceId);
}

void ControlHost::RemoveOpEndEventHandler(const std::string& serviceId, Vor::Event<int>::CallbackId& id) {
    protocolOperations.RemoveOpEndEventHandler(serviceId, id);
}

Vor::Event<void*>::CallbackId ControlHost::AddScanResultHandler(const std::string& serviceId,
                                                                std::function<void(void*)> handler) {
    return scanResults.AddResultHandler(serviceId, std::move(handler));
}

void ControlHost::RemoveScanResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id) {
    scanResults.RemoveResultHandler(serviceId, id);
}

} // namespace VorControl
