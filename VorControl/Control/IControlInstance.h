#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/PersistDomain.h"
#include "VorControl/ControlProtocol/ProtocolPersistOptions.h"
#include "VorControl/ControlProtocol/ProtocolStatus.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorCommon {
class ICommandTarget;
}

namespace VorControl {

class ControlInfo;

namespace ControlProtocol {
class IProtocolOutput;
class IProtocolRegisterAssembly;
} // namespace ControlProtocol
namespace Providers {
class IControlPersistenceProvider;
}

/// A service as the rest of the system sees it: enabling, configuration and its events. It has no lock of its own; a
/// caller between a Begin and its End has the update gate. Each Begin pairs with one End on every path, but a Begin
/// that throws has left the gate itself. Handlers are added and removed at start-up and teardown.
///
/// A service keeps its configuration in one of two styles. What it answers for the job domain counts; where it has no
/// answer, its operations without a domain do.
class IControlInstance {
public:
    /// Arguments: instance id, whether the change is to be persisted.
    using ParamsUpdatedEvent = Vor::Event<const std::string&, bool>;
    using OutputsUpdatedEvent = Vor::Event<const std::string&, bool>;
    /// Arguments: instance id, assembly id.
    using RegisterAssemblyUpdatedEvent = Vor::Event<const std::string&, const std::string&>;
    using PersistenceDomainChangeEvent = Vor::Event<VorCommon::PersistDomain>;

    enum class DataToReset : std::uint8_t {
        Params = 0,
        /// Nothing is done for it beyond the enable state.
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
    /// Starts or stops the service, each time that it is called. A failure to start or stop isn't thrown when it is a
    /// std::exception: it shows in the log, in the problems and in the status.
    virtual void Enable(bool on) = 0;
    /// What was last asked of Enable, whether it succeeded or not.
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

    /// Enters the update gate and gives the parameters to change. Fails as Params does.
    virtual std::shared_ptr<Vor::Params::Group> BeginUpdateParameters() = 0;
    /// Raises parameters updated and leaves the gate, also when nothing was changed.
    virtual void EndUpdateParameters() = 0;
    /// Gives the output map to change; empty when the service keeps none in the job domain.
    virtual std::shared_ptr<ControlProtocol::IProtocolOutput> BeginUpdateOutputsMap() = 0;
    virtual void EndUpdateOutputsMap() = 0;
    virtual void BeginUpdateRegisterAssembly() = 0;
    /// Gives the assembly to change; empty when the service keeps none of that id in the job domain.
    virtual std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly>
    BeginUpdateRegisterAssembly(const char* assemblyId) = 0;
    virtual void EndUpdateRegisterAssembly(const char* assemblyId) = 0;

    /// Only between the two lock operations; fails with yERROR_STATE otherwise.
    virtual Vor::Params::Group& Properties() const = 0;
    virtual void NonPersistentPropertiesBeginLock() = 0;
    virtual void NonPersistentPropertiesEndLock() = 0;

    /// Fails with yERROR_NOT_FOUND for a service without parameters.
    virtual std::shared_ptr<Vor::Params::Group> Params() const = 0;
    virtual const char* ParamsVersion() const = 0;
    virtual void ParamsUpdate() = 0;

    /// Whether the service keeps an output map in the job domain. One that it keeps elsewhere isn't seen here.
    virtual bool HasProtocolOutput() const = 0;
    /// These two do nothing for a service without output map.
    virtual void OutputsMapBeginLock() = 0;
    virtual void OutputsMapEndLock() = 0;
    /// Only between the two lock operations; good until the end. This and the command target fail with
    /// yERROR_UNIMPLEMENTED for a service without output map.
    virtual Vor::Params::Group& OutputsMap() const = 0;
    virtual bool HasOutputsCommandTarget() const = 0;
    virtual VorCommon::ICommandTarget& OutputsCommandTarget() const = 0;
    /// Tells the service of the change and sets the filter of its scan results anew. Fails with yERROR_UNIMPLEMENTED
    /// for a service without output map, after it was told.
    virtual void OutputsUpdate() = 0;

    /// As HasRegisterAssemblyGroup.
    virtual bool HasRegisterAssemblyCommandTarget() const = 0;
    /// Of that assembly, which owns it. Fails as RegisterAssembly does.
    virtual VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const = 0;
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(const char* assemblyId) const = 0;
    /// This and the list fail with yERROR_UNIMPLEMENTED for a service without register assemblies.
    virtual std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly>
    RegisterAssembly(const char* assemblyId) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;
    /// These two do nothing for a service without register assemblies. They lock what the service calls its assembly of
    /// that id without a domain.
    virtual void RegisterAssemblyBeginLock(const char* assemblyId) = 0;
    virtual void RegisterAssemblyEndLock(const char* assemblyId) = 0;
    /// Tells the service of the change and sets the filter of its scan results anew.
    virtual void RegisterAssemblyUpdate(const char* assemblyId) = 0;

    virtual void ResetInstance(bool keepEnabled, DataToReset data) = 0;

    virtual void OnPreStartScan() = 0;
    virtual void OnPostStopScan() = 0;
    virtual void OnFactoryRestore() = 0;
    virtual void OnPersistDomainLoaded(VorCommon::PersistDomain domain) = 0;
    virtual nlohmann::json& WorkspacePersistData() = 0;
    virtual bool HasPersistOption(VorCommon::PersistDomain domain,
                                  ControlProtocol::ProtocolPersistOptions option) const = 0;
    /// Empty for a service whose configuration the framework keeps.
    virtual std::shared_ptr<Providers::IControlPersistenceProvider> PersistenceProvider() const = 0;
    virtual void ResetProtocolToDefaultEnabledState() = 0;
    virtual bool ProtocolAutoEnableSetting() const = 0;
};

} // namespace VorControl
