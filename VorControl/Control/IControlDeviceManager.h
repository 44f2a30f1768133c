#pragma once

#include "VorApi/Event.h"
#include "VorApi/Threads/ScopeLock.h"
#include "VorControl/Control/ControlAvailableDeviceProp.h"
#include "VorControl/Control/ControlSelectedDeviceProp.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorCommon {
class ICommandTarget;
class IMetricsSource;
} // namespace VorCommon

namespace VorControl {

/// The devices with digital outputs that a service may use and those that it does use. An available device is what the
/// scan engines offer now. A selected one is configuration: it has an id such as "device-0" and ports with their data
/// sources, it is saved, and it goes only when it is deleted or when its device leaves the system. A device that comes
/// back isn't selected again.
///
/// Every operation may be called on any thread and holds the manager's reentrant lock while it works. Events are raised
/// with the lock held, on the thread of whatever caused them, AvailableDeviceListUpdatedEvent apart when a whole list
/// was updated. Their handlers may use the manager, but must not wait for another thread. No thread that holds the lock
/// may add or remove handlers of device operations.
class IControlDeviceManager {
public:
    /// By engine id and provider id.
    using AvailableDeviceMap = std::map<std::pair<std::string, std::string>, ControlAvailableDeviceProp>;
    /// By id.
    using SelectedDeviceMap = std::map<std::string, ControlSelectedDeviceProp>;

    using DeviceAddedEvent = Vor::Event<const ControlSelectedDeviceProp&, const std::string&>;
    /// The last argument is whether the change is to be persisted. The device is removed when the handlers have run.
    using DeviceRemovedEvent = Vor::Event<const ControlSelectedDeviceProp&, const std::string&, bool>;
    using DeviceUpdatedEvent = Vor::Event<const ControlSelectedDeviceProp&, const std::string&>;
    /// The second argument is the number of the port.
    using DeviceParamsChangedEvent = Vor::Event<const ControlSelectedDeviceProp&, unsigned long long>;
    /// Argument: service id.
    using AvailableListUpdatedEvent = Vor::Event<const std::string&>;

    virtual ~IControlDeviceManager() = default;

    /// The maps and their entries are used only between BeginLock and EndLock.
    virtual AvailableDeviceMap& AvailableDevices() = 0;
    virtual unsigned long long MaxSelectableDeviceCount() const = 0;
    virtual const SelectedDeviceMap& SelectedDevices() const = 0;
    /// Throws std::out_of_range for an unknown id.
    virtual ControlSelectedDeviceProp& SelectedDeviceProperties(const std::string& id) = 0;

    /// Throws yERROR_NOT_FOUND for an unknown id and, unless `force` is set, yERROR_READ_ONLY for the default device.
    virtual void DeleteSelectedDevice(const std::string& id, bool force) = 0;
    /// Returns the new id. Throws yERROR_PARAMETER when there is no such device, and yERROR_FULL when no further one
    /// can be selected.
    virtual std::string CreateSelectedDevice(const std::string& engineId, const std::string& serialNumber) = 0;
    /// Calls Enable of each selected device that there is.
    virtual void EnableSelectedDevices(bool enable) = 0;

    virtual DeviceAddedEvent& SelectedDeviceAddedEvent() = 0;
    virtual DeviceRemovedEvent& SelectedDeviceRemovedEvent() = 0;
    virtual DeviceUpdatedEvent& SelectedDeviceUpdatedEvent() = 0;
    virtual DeviceParamsChangedEvent& SelectedDeviceParamsChangedEvent() = 0;
    /// The command that switches an output of a selected device.
    virtual VorCommon::ICommandTarget& DeviceCommandTarget() = 0;
    virtual AvailableListUpdatedEvent& AvailableDeviceListUpdatedEvent() = 0;

    /// The data sources of all ports, in the order of the maps, with duplicates.
    virtual std::vector<std::string> DataSourceList() = 0;

    /// The beginning and the end of a use of the maps. Each throws the status of the lock if it fails.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;

    /// The figures of a port, valid until the next call of this, also when the device goes. Main loop only. Throws
    /// yERROR_NOT_FOUND for an unknown device or port.
    virtual const VorCommon::IMetricsSource& DevicePortMetricsSource(const std::string& deviceId,
                                                                     const std::string& portId) = 0;
    /// Refreshes the figures of all ports. Main loop only.
    virtual void UpdateDevicePortMetrics() = 0;
    virtual bool IsSelectedDefaultDevice(const std::string& serialNumber) const = 0;

    /// The selected devices, the parameters of their ports and their data sources as the section of a job. Throws
    /// yERROR_NOT_FOUND when a device has gone.
    virtual void Save(nlohmann::json& out) = 0;
    /// Selects the devices of a section, which is untrusted, and sets up their ports. Devices that are selected already
    /// stay so. Throws yERROR_PARTIAL when a device isn't there; the others are set up all the same. Throws
    /// yERROR_FORMAT, yERROR_VERSION or yERROR_PARAMETER for another section, and changes nothing then. After another
    /// failure, such as that of a port's data sources, what was set up before stays.
    virtual void Load(const nlohmann::json& in) = 0;
    /// Deselects all devices.
    virtual void Reset() = 0;
};

/// The lock of a device manager, for each use of its devices.
using DeviceManagerLock =
    Vor::ScopeLock<IControlDeviceManager, &IControlDeviceManager::BeginLock, &IControlDeviceManager::EndLock>;

} // namespace VorControl
