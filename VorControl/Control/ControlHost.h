#pragma once

#include "VorApi/Event.h"
#include "VorApi/Handle.h"
#include "VorControl/Control/IControlHost.h"
#include "yApi/yLock.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace VorControl {

class ControlProtocolOperations;
class IControlDataCache;
class IControlResourceAdaptor;
class IControlScanResults;

/// The one host of all services. It owns nothing of what its constructor gets.
class ControlHost : public IControlHost {
public:
    ControlHost(IControlScanResults& scanResults, ControlProtocolOperations& protocolOperations,
                IControlDataCache& dataCache, IControlResourceAdaptor& resourceAdaptor,
                VorCommon::IPlatformAttributes& platformAttributes, VorCommon::IRuntimeCache& runtimeCache,
                VorCommon::ProblemsManager* problemsManager, IControlScanEngineInterface& scanEngineInterface,
                IControlDeviceOperations& deviceOperations, std::uint32_t localNodeId, std::uint16_t controlChannelPort,
                std::uint16_t vdpPort, void* pipeAllocator);
    /// Ends the subscription to data source events if a service still has one.
    ~ControlHost() override;

    ControlHost(const ControlHost&) = delete;
    ControlHost& operator=(const ControlHost&) = delete;

    void StartScan(const std::string& serviceId) override;
    void StopScan(const std::string& serviceId) override;
    void StartAlignment(const std::string& serviceId, const char* scannerId) override;
    void ClearAlignment(const std::string& serviceId, const char* scannerId) override;
    void LoadJob(const std::string& serviceId, const char* job) override;
    void SoftwareTrigger(const std::string& serviceId, const char* scannerId) override;
    void FactoryRestore(const std::string& serviceId) override;
    void Restart(const std::string& serviceId) override;
    void SetNextIpConfig(const std::string& serviceId, const yIpConfig& config, bool flag) override;
    void BlinkLed(const std::string& serviceId, bool systemLed, bool ledBlinkEnabled, bool ledLightOn) override;

    IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) override;
    IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                              unsigned long long timeout) override;

    VorCommon::IPlatformAttributes& PlatformAttributes() override;
    VorCommon::IRuntimeCache::ServiceState ProfinetServiceRunningState() const override;
    void SetProfinetServiceRunningState(VorCommon::IRuntimeCache::ServiceState state) override;

    void SetForwardScanResultsToService(const std::string& serviceId, bool enable) override;
    void UpdateScanResultsOutputMap(const std::string& serviceId, const std::vector<std::string>& dataSources) override;
    void SetScanResultsFiltering(const std::string& serviceId, bool enable) override;

    void AddDataSourceEventHandler(const std::string& serviceId, const DataSourceEventFunction& function,
                                   unsigned long long timeout) override;
    void RemoveDataSourceEventHandler(const std::string& serviceId, unsigned long long timeout) override;
    void DataSourceProperties(const std::string& name, IControlSystemInterface::ControlDataSourceProperties& out,
                              unsigned long long timeout) override;
    void* LiveJob(unsigned long long timeout) override;

    VorCommon::ProblemsManager* ProblemsManager() override;

    void ReadResource(const std::string& path, std::string& out, unsigned long long timeout) override;

    IControlScanEngineInterface& ScanEngineInterface() override;
    IControlDeviceOperations& DeviceOperations() override;

    std::uint32_t LocalNodeId() override;
    std::uint16_t ControlChannelPort() override;
    std::uint16_t VdpPort() override;
    void* PipeAllocator() override;

    long long LocalNodeDateTime(unsigned long long timeout) override;
    void SetLocalNodeDateTime(const std::string& serviceId, long long dateTime) override;
    std::string LocalNodeNtpHost(unsigned long long timeout) override;
    void SetLocalNodeNtpHost(const std::string& serviceId, const std::string& host, bool flag) override;
    bool LocalNodeSyncTime(const std::string& host, unsigned long long timeout) override;

    /// For ProtocolBase: the handler is called at the end of each operation of the service, on the thread
    /// "CtlProtoOp.Disp". See the functions of ControlProtocolOperations.
    Vor::Event<int>::CallbackId AddOpEndEventHandler(const std::string& serviceId, std::function<void(int)> handler);
    void RemoveOpEndEventHandler(const std::string& serviceId, Vor::Event<int>::CallbackId& id);
    /// See ControlProtocolOperations.
    std::uint64_t BeginOfLastTrigger(const std::string& serviceId) const;

    /// For ProtocolBase: a service has one handler, which is called on a thread of this service.
    Vor::Event<void*>::CallbackId AddScanResultHandler(const std::string& serviceId,
                                                       std::function<void(void*)> handler);
    /// Clears the id. Waits for a batch that is being processed.
    void RemoveScanResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id);

private:
    void DataSourceCreatedEventHandler(const std::string& name);
    void DataSourceDeletedEventHandler(const std::string& name);
    void DataSourceUpdatedEventHandler(const std::string& name);
    void CallServiceDataSourceEventHandler(VorApi::EventType type, const std::string& name);
    IControlSystemInterface::ControlDataSourceProperties PropertiesForEvent(VorApi::EventType type,
                                                                            const std::string& name);
    /// Makes the subscription to data source events for all services. If it fails, the service gets no events.
    void Subscribe(const std::string& serviceId, unsigned long long timeout);
    /// Called with the lock held. Throws yERROR_STATE while functions of services run.
    void CheckNotNotifying(const std::string& serviceId) const;

    IControlScanResults& scanResults;
    ControlProtocolOperations& protocolOperations;
    IControlDataCache& dataCache;
    IControlResourceAdaptor& resourceAdaptor;
    VorCommon::IPlatformAttributes& platformAttributes;
    VorCommon::IRuntimeCache& runtimeCache;
    IControlSystemInterface::DataSourceEventHandlerContainer dataSourceHandlers;
    IControlSystemInterface::DataSourceEventCallbackIdContainer dataSourceCallbackIds;
    /// Guards `serviceMap`, `notifying` and the ids of the subscription. Held during waits for the main loop and while
    /// functions of services run, so it ranks before all locks that these use.
    Vor::Handle<yLock, yLock_Destroy> lock;
    std::map<std::string, DataSourceEventFunction> serviceMap; ///< by service id
    bool notifying = false;                                    ///< functions of `serviceMap` run
    VorCommon::ProblemsManager* problemsManager;
    IControlScanEngineInterface& scanEngineInterface;
    IControlDeviceOperations& deviceOperations;
    std::uint32_t localNodeId;
    std::uint16_t controlChannelPort;
    std::uint16_t vdpPort;
    void* pipeAllocator;
};

} // namespace VorControl
