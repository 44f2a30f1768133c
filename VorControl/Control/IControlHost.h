#pragma once

#include "VorApi/EventType.h"
#include "VorCommon/IRuntimeCache.h"
#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/IControlSystemInterface.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace VorCommon {
class IPlatformAttributes;
class ProblemsManager;
} // namespace VorCommon

namespace VorControl {

class IControlDeviceOperations;

/// What the system offers to a service. All services share one host, which outlives them. `serviceId` is the id of the
/// calling service. Each operation runs on the caller's thread; the accessors return values that don't change.
class IControlHost {
public:
    using DataSourceEventFunction =
        std::function<void(VorApi::EventType, IControlSystemInterface::ControlDataSourceProperties)>;

    virtual ~IControlHost() = default;

    /// Operations on the sensor, one at a time for all services; see ControlProtocolOperations. They return at once,
    /// and the end is reported to the service's operation end handlers. If one throws, usually yERROR_BUSY, nothing
    /// was started.
    virtual void StartScan(const std::string& serviceId) = 0;
    virtual void StopScan(const std::string& serviceId) = 0;
    virtual void StartAlignment(const std::string& serviceId, const char* scannerId) = 0;
    virtual void ClearAlignment(const std::string& serviceId, const char* scannerId) = 0;
    virtual void LoadJob(const std::string& serviceId, const char* job) = 0;
    virtual void SoftwareTrigger(const std::string& serviceId, const char* scannerId) = 0;
    virtual void FactoryRestore(const std::string& serviceId) = 0;
    virtual void Restart(const std::string& serviceId) = 0;
    /// `flag`: whether the settings are kept beyond the next start.
    virtual void SetNextIpConfig(const std::string& serviceId, const yIpConfig& config, bool flag) = 0;
    /// Blinks the LED of the system, or else sets that of the default scanner.
    virtual void BlinkLed(const std::string& serviceId, bool systemLed, bool ledBlinkEnabled, bool ledLightOn) = 0;

    /// These two return within `timeout` microseconds, with the last known state if there is no newer one; see
    /// IControlDataCache. A service that polls passes 0.
    virtual IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) = 0;
    virtual IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                                      unsigned long long timeout) = 0;

    virtual VorCommon::IPlatformAttributes& PlatformAttributes() = 0;
    virtual VorCommon::IRuntimeCache::ServiceState ProfinetServiceRunningState() const = 0;
    virtual void SetProfinetServiceRunningState(VorCommon::IRuntimeCache::ServiceState state) = 0;

    /// Whether scan results are forwarded to the service. Has an effect only while the service is enabled, and is false
    /// again at each enable: set it in every Start. Never call it from ProcessResultSets.
    virtual void SetForwardScanResultsToService(const std::string& serviceId, bool enable) = 0;
    /// The data sources that pass the filter; with an empty list none passes. Kept while the service is disabled.
    virtual void UpdateScanResultsOutputMap(const std::string& serviceId,
                                            const std::vector<std::string>& dataSources) = 0;
    /// Whether only the data sources of the output map pass. As for the forwarding, but true again at each enable.
    virtual void SetScanResultsFiltering(const std::string& serviceId, bool enable) = 0;

    /// Calls the function whenever a data source is created, changed or deleted. A service can have one function; a
    /// second one fails with yERROR_ALREADY_EXISTS. The function runs on the main loop with a lock held. It must not
    /// wait for another thread of the service that calls these two; called by the function itself they throw
    /// yERROR_STATE. All services share one subscription, for which this waits for the main loop for at most `timeout`
    /// microseconds. Don't call it in Start: while a job is loaded no subscription is made. A subscription that wasn't
    /// made, which is logged as a warning, is made at the next call of any service.
    virtual void AddDataSourceEventHandler(const std::string& serviceId, const DataSourceEventFunction& function,
                                           unsigned long long timeout) = 0;
    virtual void RemoveDataSourceEventHandler(const std::string& serviceId, unsigned long long timeout) = 0;
    /// The following reads wait for the main loop for at most `timeout` microseconds.
    /// `out` is cleared when there was no answer in time. Throws yERROR_NOT_FOUND for an unknown data source.
    virtual void DataSourceProperties(const std::string& name,
                                      IControlSystemInterface::ControlDataSourceProperties& out,
                                      unsigned long long timeout) = 0;
    /// A share of the loaded job's object, which the caller releases; null when there was no answer in time.
    virtual void* LiveJob(unsigned long long timeout) = 0;

    virtual VorCommon::ProblemsManager* ProblemsManager() = 0;

    /// Reads a resource of the sensor, such as "/controls/modbus", or one member of its document, such as
    /// "/controls/modbus#/enabled": `out` is its JSON text, "null" for a member that it doesn't have. One read at a
    /// time for all services, yERROR_BUSY for another one; a read that took too long counts until the main loop has
    /// ended it. Throws yERROR_NOT_FOUND when there is no such resource, and yERROR_COMMAND when the main loop didn't
    /// read it within `timeout` microseconds; then `out` is unchanged.
    virtual void ReadResource(const std::string& path, std::string& out, unsigned long long timeout) = 0;

    virtual IControlScanEngineInterface& ScanEngineInterface() = 0;
    virtual IControlDeviceOperations& DeviceOperations() = 0;

    virtual std::uint32_t LocalNodeId() = 0;
    virtual std::uint16_t ControlChannelPort() = 0;
    virtual std::uint16_t VdpPort() = 0;
    virtual void* PipeAllocator() = 0;

    /// Microseconds since the beginning of 1970, UTC; 0 when there was no answer in time.
    virtual long long LocalNodeDateTime(unsigned long long timeout) = 0;
    /// An operation, as those above.
    virtual void SetLocalNodeDateTime(const std::string& serviceId, long long dateTime) = 0;
    /// Empty when there was no answer in time.
    virtual std::string LocalNodeNtpHost(unsigned long long timeout) = 0;
    /// An operation, as those above. `flag`: whether the host is kept for later starts.
    virtual void SetLocalNodeNtpHost(const std::string& serviceId, const std::string& host, bool flag) = 0;
    /// False when there was no answer in time.
    virtual bool LocalNodeSyncTime(const std::string& host, unsigned long long timeout) = 0;
};

} // namespace VorControl
