#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/PersistDomain.h"
#include "VorControl/Control/EnableFailure.h"
#include "VorControl/ControlProtocol/ProtocolPersistOptions.h"
#include "VorControl/ControlProtocol/ProtocolStatus.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorCommon {
class ICommandTarget;
class IMetricsKeeper;
class IMetricsSource;
} // namespace VorCommon

namespace VorControl {

class ControlInfo;
class IControlDeviceManager;

namespace ControlProtocol {
class IProtocolOutput;
class IProtocolRegisterAssembly;
} // namespace ControlProtocol
namespace Providers {
class IControlPersistenceProvider;
}

/// A service as the rest of the system uses it: enabling, configuration and its events. It has no lock; between a Begin
/// and its End the caller holds the update gate. Each Begin needs exactly one End on every path, but a Begin that
/// throws has left the gate itself. Handlers are added and removed at start-up and teardown.
///
/// A service keeps its configuration either in the job domain or without a domain. The operations here use what the
/// service returns for the job domain, and its operations without a domain where it returns nothing.
class IControlInstance {
public:
    /// Arguments: instance id, whether the change is to be persisted.
    using ParamsUpdatedEvent = Vor::Event<const std::string&, bool>;
    using OutputsUpdatedEvent = Vor::Event<const std::string&, bool>;
    /// Argument: instance id.
    using EnabledEvent = Vor::Event<const std::string&>;
    /// Arguments: instance id, assembly id.
    using RegisterAssemblyUpdatedEvent = Vor::Event<const std::string&, const std::string&>;
    using PersistenceDomainChangeEvent = Vor::Event<VorCommon::PersistDomain>;
    /// Argument: instance id.
    using AvailableDeviceListUpdatedEvent = Vor::Event<const std::string&>;
    /// Arguments: instance id, device id, port id, assembly id.
    using DeviceRegisterAssemblyUpdatedEvent =
        Vor::Event<const std::string&, const std::string&, const std::string&, const std::string&>;
    /// Arguments: instance id, device id, whether the change is to be persisted. The device id is empty when a client
    /// changed the selection.
    using DeviceUpdatedEvent = Vor::Event<const std::string&, const std::string&, bool>;
    using DeviceRemovedEvent = Vor::Event<const std::string&, const std::string&, bool>;

    enum class DataToReset : std::uint8_t {
        Params = 0,
        /// Resets nothing but the enable state.
        OutputsMap = 1,
        RegisterAssemblies = 2,
        DeviceManager = 3,
        All = 4
    };

    virtual ~IControlInstance() = default;

    virtual const ControlInfo& Info() const = 0;
    virtual const std::string& TypeName() const = 0;
    virtual const std::string& Id() const = 0;
    virtual const std::string& DisplayName() const = 0;
    /// Starts or stops the service, also when it is called again with the same value. What the start or stop throws
    /// isn't thrown on: the log, the problems, the status and LastEnableFailure report it.
    virtual void Enable(bool on) = 0;
    /// The argument of the last Enable, whether that succeeded or not.
    virtual bool IsEnabled() const = 0;
    virtual ControlProtocol::ProtocolStatus GetProtocolStatus() const = 0;

    virtual ParamsUpdatedEvent::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) = 0;
    virtual void RemoveParamsUpdatedEventHandler(ParamsUpdatedEvent::CallbackId& id) = 0;
    virtual OutputsUpdatedEvent::CallbackId
    AddOutputsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) = 0;
    virtual void RemoveOutputsUpdatedEventHandler(OutputsUpdatedEvent::CallbackId& id) = 0;
    virtual RegisterAssemblyUpdatedEvent::CallbackId
    AddRegisterAssemblyUpdatedEventHandler(std::function<void(const std::string&, const std::string&)> handler) = 0;
    virtual void RemoveRegisterAssemblyUpdatedEventHandler(RegisterAssemblyUpdatedEvent::CallbackId& id) = 0;
    virtual PersistenceDomainChangeEvent::CallbackId
    AddPersistenceDomainChangeEventHandler(std::function<void(VorCommon::PersistDomain)> handler) = 0;
    virtual void RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId& id) = 0;
    /// Both fail with yERROR_UNIMPLEMENTED for a service without device manager. Handlers are called as those of
    /// IControlDeviceManager, and so are those of a device that was updated or removed.
    virtual AvailableDeviceListUpdatedEvent::CallbackId
    AddAvailableDeviceListUpdatedEventHandler(std::function<void(const std::string&)> handler) = 0;
    virtual void RemoveAvailableDeviceListUpdatedEventHandler(AvailableDeviceListUpdatedEvent::CallbackId& id) = 0;
    virtual DeviceRegisterAssemblyUpdatedEvent::CallbackId AddDeviceRegisterAssemblyUpdatedEventHandler(
        std::function<void(const std::string&, const std::string&, const std::string&, const std::string&)>
            handler) = 0;
    virtual void
    RemoveDeviceRegisterAssemblyUpdatedEventHandler(DeviceRegisterAssemblyUpdatedEvent::CallbackId& id) = 0;
    virtual DeviceUpdatedEvent::CallbackId
    AddDeviceUpdatedEventHandler(std::function<void(const std::string&, const std::string&, bool)> handler) = 0;
    virtual void RemoveDeviceUpdatedEventHandler(DeviceUpdatedEvent::CallbackId& id) = 0;
    virtual DeviceRemovedEvent::CallbackId
    AddDeviceRemovedEventHandler(std::function<void(const std::string&, const std::string&, bool)> handler) = 0;
    virtual void RemoveDeviceRemovedEventHandler(DeviceRemovedEvent::CallbackId& id) = 0;

    /// Enters the update gate and returns the parameters to change. Fails as Params does.
    virtual std::shared_ptr<Vor::Params::Group> BeginUpdateParameters() = 0;
    /// Raises the event "parameters updated" and leaves the gate, also when nothing was changed.
    virtual void EndUpdateParameters() = 0;
    /// Returns the output map to change; empty when the service keeps none in the job domain.
    virtual std::shared_ptr<ControlProtocol::IProtocolOutput> BeginUpdateOutputsMap() = 0;
    virtual void EndUpdateOutputsMap() = 0;
    virtual void BeginUpdateRegisterAssembly() = 0;
    /// Returns the assembly to change; empty when the service keeps none of that id in the job domain.
    virtual std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly>
    BeginUpdateRegisterAssembly(const char* assemblyId) = 0;
    virtual void EndUpdateRegisterAssembly(const char* assemblyId) = 0;
    /// The update of an assembly of a port of a device, which the device manager returns.
    virtual void BeginUpdateDeviceRegisterAssembly() = 0;
    virtual void EndUpdateDeviceRegisterAssembly(const std::string& deviceId, const std::string& portId,
                                                 const std::string& assemblyId) = 0;

    /// The service's figures. Both refer to the same object, which lives as long as the instance.
    virtual VorCommon::IMetricsKeeper& MetricsKeeper() = 0;
    virtual const VorCommon::IMetricsSource& MetricsSource() = 0;

    /// Only between the two lock operations; fails with yERROR_STATE otherwise.
    virtual Vor::Params::Group& Properties() const = 0;
    virtual void NonPersistentPropertiesBeginLock() = 0;
    virtual void NonPersistentPropertiesEndLock() = 0;

    /// Fails with yERROR_NOT_FOUND for a service without parameters.
    virtual std::shared_ptr<Vor::Params::Group> Params() const = 0;
    virtual const char* ParamsVersion() const = 0;
    virtual void ParamsUpdate() = 0;

    /// Whether the service keeps an output map in the job domain. One in another domain doesn't count.
    virtual bool HasProtocolOutput() const = 0;
    /// Both do nothing for a service without output map.
    virtual void OutputsMapBeginLock() = 0;
    virtual void OutputsMapEndLock() = 0;
    /// Only between the two lock operations, and valid until the second. This and the command target fail with
    /// yERROR_UNIMPLEMENTED for a service without output map.
    virtual Vor::Params::Group& OutputsMap() const = 0;
    virtual bool HasOutputsCommandTarget() const = 0;
    virtual VorCommon::ICommandTarget& OutputsCommandTarget() const = 0;
    /// Notifies the service of the change and updates the filter of its scan results. For a service without output map
    /// it fails with yERROR_UNIMPLEMENTED after the notification.
    virtual void OutputsUpdate() = 0;

    /// As HasRegisterAssemblyGroup.
    virtual bool HasRegisterAssemblyCommandTarget() const = 0;
    /// The command target of that assembly, which owns it. Fails as RegisterAssembly does.
    virtual VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const = 0;
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(const char* assemblyId) const = 0;
    /// This and the list fail with yERROR_UNIMPLEMENTED for a service without register assemblies.
    virtual std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly>
    RegisterAssembly(const char* assemblyId) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;
    /// Both do nothing for a service without register assemblies. They lock the assembly that the service returns for
    /// the id without a domain.
    virtual void RegisterAssemblyBeginLock(const char* assemblyId) = 0;
    virtual void RegisterAssemblyEndLock(const char* assemblyId) = 0;
    /// Notifies the service of the change and updates the filter of its scan results. Does nothing for a service
    /// without register assemblies and device manager. The id is empty when the devices were loaded.
    virtual void RegisterAssemblyUpdate(const char* assemblyId) = 0;

    virtual bool HasDeviceManager() const = 0;
    /// Fails with yERROR_NOT_FOUND for a service without device manager.
    virtual IControlDeviceManager& DeviceManager() const = 0;
    /// The update of the selected devices.
    virtual void BeginUpdateDeviceManager() = 0;
    virtual void EndUpdateDeviceManager() = 0;
    /// Both do nothing for a service without device manager.
    virtual void DeviceManagerBeginLock() = 0;
    virtual void DeviceManagerEndLock() = 0;

    virtual void ResetInstance(bool keepEnabled, DataToReset data) = 0;

    /// The commands of the service as a whole, which owns the target; null when there are none.
    virtual VorCommon::ICommandTarget* CommandTarget() = 0;

    virtual void OnPreStartScan() = 0;
    virtual void OnPostStopScan() = 0;
    virtual void OnFactoryRestore() = 0;
    virtual void OnPersistDomainLoaded(VorCommon::PersistDomain domain) = 0;
    virtual nlohmann::json& WorkspacePersistData() = 0;
    virtual bool HasPersistOption(VorCommon::PersistDomain domain,
                                  ControlProtocol::ProtocolPersistOptions option) const = 0;
    /// Empty for a service whose configuration PersistControl reads and writes itself.
    virtual std::shared_ptr<Providers::IControlPersistenceProvider> PersistenceProvider() const = 0;
    virtual void ResetProtocolToDefaultEnabledState() = 0;
    virtual bool ProtocolAutoEnableSetting() const = 0;

    /// Why the last Enable failed; nothing when it succeeded, and before the first. Not while Enable runs on another
    /// thread.
    virtual std::optional<EnableFailure> LastEnableFailure() const = 0;

    /// Raised at the end of each Enable, on its thread.
    virtual EnabledEvent::CallbackId AddEnabledEventHandler(std::function<void(const std::string&)> handler) = 0;
    virtual void RemoveEnabledEventHandler(EnabledEvent::CallbackId& id) = 0;
};

} // namespace VorControl
