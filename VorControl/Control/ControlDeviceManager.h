#pragma once

#include "VorApi/Handle.h"
#include "VorCommon/IProviderManager.h"
#include "VorControl/Control/ControlDeviceCommandTarget.h"
#include "VorControl/Control/ControlDeviceManagerCtorArgs.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlDeviceOperations.h"
#include "yApi/yLock.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorControl {

class IControlDevicePort;

/// A service makes one if it uses devices, on the main loop, and destroys it there. While it exists it is notified of
/// devices that come, change and go. A new list of devices is made at the start and then with each
/// IControlDeviceOperations::FindAvailableSensors of the client id that is the service's id.
class ControlDeviceManager : public IControlDeviceManager {
public:
    /// Throws the status of a lock that can't be made, and what the scan engines throw.
    explicit ControlDeviceManager(const ControlDeviceManagerCtorArgs& args);
    ~ControlDeviceManager() override;

    ControlDeviceManager(const ControlDeviceManager&) = delete;
    ControlDeviceManager& operator=(const ControlDeviceManager&) = delete;

    AvailableDeviceMap& AvailableDevices() override;
    unsigned long long MaxSelectableDeviceCount() const override;
    const SelectedDeviceMap& SelectedDevices() const override;
    ControlSelectedDeviceProp& SelectedDeviceProperties(const std::string& id) override;
    void DeleteSelectedDevice(const std::string& id, bool force) override;
    std::string CreateSelectedDevice(const std::string& engineId, const std::string& serialNumber) override;
    void EnableSelectedDevices(bool enable) override;
    DeviceAddedEvent& SelectedDeviceAddedEvent() override;
    DeviceRemovedEvent& SelectedDeviceRemovedEvent() override;
    DeviceUpdatedEvent& SelectedDeviceUpdatedEvent() override;
    DeviceParamsChangedEvent& SelectedDeviceParamsChangedEvent() override;
    VorCommon::ICommandTarget& DeviceCommandTarget() override;
    AvailableListUpdatedEvent& AvailableDeviceListUpdatedEvent() override;
    std::vector<std::string> DataSourceList() override;
    void BeginLock() override;
    void EndLock() override;
    const VorCommon::IMetricsSource& DevicePortMetricsSource(const std::string& deviceId,
                                                             const std::string& portId) override;
    void UpdateDevicePortMetrics() override;
    bool IsSelectedDefaultDevice(const std::string& serialNumber) const override;
    void Save(nlohmann::json& out) override;
    void Load(const nlohmann::json& in) override;
    void Reset() override;

    /// The version of the section that Save makes.
    const char* PersistenceDataVersion() const { return "1.2"; }

private:
    using Provider = VorCommon::IDigitalOutputProvider;
    using ProviderManager = VorCommon::IProviderManager<Provider>;
    using DeviceList = std::vector<ControlAvailableDeviceProp>;

    /// What handlers of devices and engines refer to, which may be called on other threads while this object goes.
    struct Link {
        /// The manager's lock: guards the two maps and `manager`. Ranks after the lock of the handlers of device
        /// operations, before those of register assemblies.
        Vor::Handle<yLock, yLock_Destroy> lock;
        ControlDeviceManager* manager = nullptr; ///< null when it no longer exists
    };

    struct EngineSubscription {
        std::weak_ptr<ProviderManager> providers;
        ProviderManager::ProviderAddedEvent::CallbackId added;
        ProviderManager::ProviderRemovedEvent::CallbackId removed;
    };

    /// A handler that calls the function with the lock held, for as long as this object exists.
    template <class Function>
    auto Guarded(Function function);

    void Subscribe();
    void Unsubscribe();
    void SetupScanEngineEvents();
    void RemoveScanEngineEvents();
    void UpdateAvailableDevicesFromScannerWithoutDeviceOperations();
    void OpEndEventHandler(const ControlDeviceOperationsResults& results);
    void OnAvailableDeviceListUpdatedEventOpResult(const DeviceList& list);

    // The caller of the following holds the lock.

    void EnterAvailableDevices(const DeviceList& list);
    void ClearAvailableDevices();
    ControlAvailableDeviceProp* FindAvailableDevicePropSerialNumber(const std::string& engineId,
                                                                    const std::string& serialNumber);
    ControlAvailableDeviceProp* FindAvailableDevicePropProviderId(const std::string& engineId,
                                                                  const std::string& providerId);
    void AddAvailableDeviceHandlers(ControlAvailableDeviceProp& available);
    static void RemoveAvailableDeviceHandlers(ControlAvailableDeviceProp& available);

    bool AutoSelectDefaultDevice();
    void CheckSelectedDeviceCount() const;
    std::string GetNextSelectedDeviceId() const;
    std::string AddSelectedDeviceEntry(const ControlAvailableDeviceProp& available);
    /// Fills a new entry and returns its id.
    std::string EnterSelectedDevice(const ControlAvailableDeviceProp& available);
    static void UpdateSelectedDeviceProp(const ControlAvailableDeviceProp& available,
                                         ControlSelectedDeviceProp& selected);
    void UpdateSelectedDevicesPropAndConfig();
    void AddSelectedDeviceHandlers(ControlSelectedDeviceProp& selected);
    static void RemoveSelectedDeviceHandlers(ControlSelectedDeviceProp& selected);
    void DeleteSelectedDeviceImpl(ControlSelectedDeviceProp& selected);
    /// Empty when the device isn't selected.
    std::string DeviceIdOfSelectedDevice(const std::string& engineId, const std::string& providerId) const;
    /// Deletes a device that went from the selected ones; the default device stays.
    void DeleteRemovedDevice(const std::string& engineId, const std::string& providerId);

    void OnDigitalOutputProviderAddedEventHandler(const std::string& engineId, const std::string& providerId,
                                                  const std::shared_ptr<Provider>& provider);
    void OnDigitalOutputProviderRemovedEventHandler(const std::string& engineId, const std::string& providerId);
    void OnDeviceChanged(const std::string& engineId, const std::string& providerId);
    void OnDeviceParamsChanged(const std::string& id, unsigned long long port);
    void OnTriggerDigitalOutput(const std::string& deviceId, const std::string& portId, long long target, bool value);

    void SaveRegisterAssemblyList(IControlDevicePort& port, nlohmann::json& portJson) const;
    /// Returns whether the device isn't there.
    bool LoadDevice(const nlohmann::json& itemJson, const std::string& engineId, const std::string& providerId);
    /// Returns whether the device has gone.
    bool LoadPortConfigurations(ControlSelectedDeviceProp& selected, const nlohmann::json& itemJson);
    void LoadPortConfiguration(ControlSelectedDeviceProp& selected, Provider& provider, const nlohmann::json& portJson);
    void LoadRegisterAssemblyList(IControlDevicePort& port, const nlohmann::json& list) const;
    void LoadRegisterAssemblyEntry(IControlDevicePort& port, const nlohmann::json& entry) const;
    void LoadRegisterAssemblyBlocks(IControlDevicePort& port, const nlohmann::json& entry) const;

    const std::string serviceId;
    const std::string serviceName;
    IControlScanEngineInterface& scanEngineInterface;
    IControlDeviceOperations& deviceOperations;
    IControlDeviceOperations::OpEndEvent::CallbackId opEndHandle;
    const std::size_t maxSelectableDeviceCount = 1;
    unsigned long long nextSelectedDeviceNumber = 0;
    AvailableDeviceMap availableDevices;
    const std::shared_ptr<Link> link;
    SelectedDeviceMap selectedDevices;
    ControlDeviceCommandTarget commandTarget;
    const bool autoSelectDefaultDevice;
    const std::string defaultSerialNumber;
    DeviceAddedEvent deviceAdded;
    DeviceRemovedEvent deviceRemoved;
    DeviceUpdatedEvent deviceUpdated;
    DeviceParamsChangedEvent deviceParamsChanged;
    AvailableListUpdatedEvent availableListUpdated;
    std::map<std::string, EngineSubscription> engineSubscriptions; ///< by engine id
    std::shared_ptr<ControlDevicePort> reportedPort;               ///< whose figures were last returned
};

} // namespace VorControl
