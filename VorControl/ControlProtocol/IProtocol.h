#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Group.h"
#include "VorCommon/IMetricsKeeper.h"
#include "VorCommon/IMetricsSource.h"
#include "VorCommon/PersistDomain.h"
#include "VorControl/ControlProtocol/ProtocolPersistOptions.h"
#include "VorControl/ControlProtocol/ProtocolStatus.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorControl {
class IControlDeviceManager;
class IControlHost;
} // namespace VorControl

namespace VorCommon {
class ICommandTarget;
}

namespace VorControl::Providers {
class IControlPersistenceProvider;
}

namespace VorControl::ControlProtocol {

class IProtocolOutput;
class IProtocolRegisterAssembly;
class IProtocolRegisterAssemblyGroup;

/// The contract between the framework and a control service. Services derive from ProtocolBase, which has a default for
/// each operation except Start and Stop. "Not implemented" is a Vor::Exception with yERROR_UNIMPLEMENTED, "not found"
/// one with yERROR_NOT_FOUND, both without a text.
class IProtocol : public VorCommon::IMetricsKeeper, public VorCommon::IMetricsSource {
public:
    using ParamsInternalUpdateEvent = Vor::Event<bool>;
    using OutputsInternalUpdateEvent = Vor::Event<bool>;
    using PersistenceDomainChangeEvent = Vor::Event<VorCommon::PersistDomain>;

    ~IProtocol() override = default;

    virtual const std::string& DisplayName() const = 0;
    /// May be called without the lock of the properties.
    virtual ProtocolStatus GetProtocolStatus() const = 0;

    /// Called after a client changed the parameters, on the thread that changed them, inside the update gate.
    virtual void ParamsUpdate() = 0;
    virtual void ParamsReset() = 0;

    /// Called on the main loop, or on the persistence thread while the main loop waits for it, perhaps inside the
    /// update gate: never wait here for a thread that needs the gate or the main loop. A failure is thrown, after the
    /// status was set. May be called when the service is already started: then it restarts with its present parameters.
    virtual void Start() = 0;
    /// Called as Start is. Returns within 200 ms. When it returns, no client is served and no thread of the service
    /// runs.
    virtual void Stop() = 0;

    /// Throws yERROR_STATE unless it is called between the two lock operations. The reference is valid until EndLock.
    virtual Vor::Params::Group& Properties() const = 0;
    /// Never nest these: EndLock ends the use of the properties even when it is an inner one.
    virtual void NonPersistentPropertiesBeginLock() = 0;
    virtual void NonPersistentPropertiesEndLock() = 0;

    virtual void BeginUpdateParams(const char* version) = 0;
    virtual void EndUpdateParams() = 0;
    /// "Not found" when the service has none.
    virtual Vor::Params::Group& Params() const = 0;
    virtual const char* ParamsVersion() const = 0;

    /// The argument of the event is whether the change is to be persisted. A removal clears the id, and does nothing
    /// for an id that isn't set.
    virtual ParamsInternalUpdateEvent::CallbackId
    AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) = 0;
    virtual void RemoveParamsInternalUpdateEventHandler(ParamsInternalUpdateEvent::CallbackId& id) = 0;
    virtual void NotifyParamsInternalUpdateEventHandler(bool persist) = 0;

    virtual OutputsInternalUpdateEvent::CallbackId
    AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler) = 0;
    virtual void RemoveOutputsInternalUpdateEventHandler(OutputsInternalUpdateEvent::CallbackId& id) = 0;
    virtual void NotifyOutputsInternalUpdateEventHandler(bool persist) = 0;

    virtual PersistenceDomainChangeEvent::CallbackId
    AddPersistenceDomainChangeEventHandler(std::function<void(VorCommon::PersistDomain)> handler) = 0;
    virtual void RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId& id) = 0;
    /// A service can't report a change of the job domain: the attempt is logged and raises no event.
    virtual void NotifyPersistenceDomainChangeEventHandler(VorCommon::PersistDomain domain) = 0;

    /// Called after a client changed the output map. "Not implemented" by default.
    virtual void OutputsUpdate() = 0;
    virtual bool HasProtocolOutput() const = 0;
    virtual IProtocolOutput& Outputs() const = 0;
    virtual bool HasOutputsCommandTarget() const = 0;
    virtual VorCommon::ICommandTarget& OutputsCommandTarget() const = 0;

    /// Called on the service's own dispatcher thread with a yArrayList of at least one ResultSet handle, in order of
    /// arrival. The list and its sets are valid only during the call; keep a share of a set that is used longer. Must
    /// not add or remove scan result handlers, and must not set the forwarding or the filter of scan results.
    virtual void ProcessResultSets(void* resultSets) = 0;
    /// Does nothing if the handler is already added.
    virtual void AddControlScanResultsHandler() = 0;
    /// Waits until a running ProcessResultSets has returned.
    virtual void RemoveControlScanResultsHandler() = 0;

    /// The commands of the service as a whole, which owns the target; null, the default, when there are none.
    virtual VorCommon::ICommandTarget* CommandTarget() = 0;

    /// Called after a client changed the assembly with that id or, with a device manager, that of a port, and with an
    /// empty id after the devices were loaded. "Not implemented" by default, so a service with register assemblies or a
    /// device manager overrides it.
    virtual void RegisterAssemblyUpdate(const char* assemblyId) = 0;
    virtual bool HasRegisterAssemblyCommandTarget() const = 0;
    virtual VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const = 0;
    /// Whether the service has a group with at least one assembly.
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(const char* assemblyId) const = 0;
    virtual std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* assemblyId) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;
    virtual void ConfigureDefaultRegisterAssembly() = 0;

    virtual bool HasDeviceManager() const = 0;
    /// "Not found" when the service has none.
    virtual IControlDeviceManager& DeviceManager() const = 0;

    /// The names of the data sources that the service needs. The scan results are filtered by them.
    virtual std::vector<std::string> DataSourceList() const = 0;

    virtual void OnPreStartScan() = 0;
    virtual void OnPostStopScan() = 0;
    virtual void OnFactoryRestore() = 0;

    /// The result of the last operation of this service that has ended: 0 there was none, 2 success, 3 failure.
    virtual std::uint8_t CompletedOperationStatus() const = 0;

    /// Whether PersistOptions of the domain has any bit of `option`.
    virtual bool HasPersistOption(VorCommon::PersistDomain domain, ProtocolPersistOptions option) const = 0;
    virtual void OnPersistDomainLoaded(VorCommon::PersistDomain domain) = 0;
    /// The document that is persisted in the workspace domain. It is assigned when the domain is loaded.
    virtual nlohmann::json& WorkspacePersistData() = 0;
    virtual ProtocolPersistOptions PersistOptions(VorCommon::PersistDomain domain) const = 0;

    // The operations for each domain in which a persistence provider keeps the configuration. An object that doesn't
    // exist is an empty pointer. A version that is passed in is empty, not null, if the file contains none. The ends of
    // updates and the resets of the job domain also set the filter of the scan results.

    /// As DataSourceList(), for the objects of the domain.
    virtual std::vector<std::string> DataSourceList(VorCommon::PersistDomain domain) = 0;
    virtual std::shared_ptr<Vor::Params::Group> Params(VorCommon::PersistDomain domain) const = 0;
    /// Null when the service has no parameters in the domain.
    virtual const char* ParamsVersion(VorCommon::PersistDomain domain) const = 0;
    /// Whether parameters of this other version can be converted to the present one.
    virtual bool SupportedParamsVersion(VorCommon::PersistDomain domain, const char* version) const = 0;
    virtual void ParamsReset(VorCommon::PersistDomain domain) = 0;
    /// Adds or removes parameters that depend on the values of others. True if it did: then the document must be
    /// applied again.
    virtual bool UpdateDynamicParams(VorCommon::PersistDomain domain) = 0;
    /// The parameters to change, in the form of this version. Unless it is empty, EndUpdateParams must follow.
    virtual std::shared_ptr<Vor::Params::Group> BeginUpdateParams(VorCommon::PersistDomain domain,
                                                                  const char* version) = 0;
    virtual void EndUpdateParams(VorCommon::PersistDomain domain, const char* version) = 0;

    virtual std::shared_ptr<IProtocolOutput> Outputs(VorCommon::PersistDomain domain) = 0;
    virtual void OutputsMapReset(VorCommon::PersistDomain domain) = 0;
    /// The map to change. Unless it is empty, EndUpdateOutputsMap must follow.
    virtual std::shared_ptr<IProtocolOutput> BeginUpdateOutputsMap(VorCommon::PersistDomain domain,
                                                                   const char* version) = 0;
    virtual void EndUpdateOutputsMap(VorCommon::PersistDomain domain, const char* version) = 0;

    virtual std::shared_ptr<IProtocolRegisterAssemblyGroup> RegisterAssemblyGroup(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterAssemblyGroupReset(VorCommon::PersistDomain domain) = 0;
    /// Null when the service doesn't have the assembly in the domain.
    virtual const char* RegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId) = 0;
    /// Whether the assembly of this other version can be converted to the present one.
    virtual bool SupportedRegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId,
                                                  const char* version) = 0;
    /// The assembly to change. Unless it is empty, EndUpdateRegisterAssembly must follow.
    virtual std::shared_ptr<IProtocolRegisterAssembly>
    BeginUpdateRegisterAssembly(VorCommon::PersistDomain domain, const char* assemblyId, const char* version) = 0;
    virtual void EndUpdateRegisterAssembly(VorCommon::PersistDomain domain, const char* assemblyId,
                                           const char* version) = 0;
    /// Empty: the framework persists what the operations without a domain return.
    virtual std::shared_ptr<Providers::IControlPersistenceProvider> PersistenceProvider() = 0;

    virtual IControlHost& GetControlHost() = 0;
    virtual const IControlHost& GetControlHost() const = 0;

protected:
    /// The scan is going to start (true) or has stopped (false).
    virtual void ScanStateChangeImpl(bool started) = 0;
    /// An operation of this service has ended, with yOK or the status of its failure; the command status is set
    /// already. Called on the operations thread, or on the thread that called ProcessReceivedCommonCommands: must not
    /// wait for either of them, and must not destroy the service. May start the next operation.
    virtual void OperationEndEventImpl(int status) = 0;

    // The operations without "Impl" call these.

    virtual void ParamsResetImpl(VorCommon::PersistDomain domain) = 0;
    virtual void OutputsMapResetImpl(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterAssemblyGroupResetImpl(VorCommon::PersistDomain domain) = 0;
    virtual bool UpdateDynamicParamsImpl(VorCommon::PersistDomain domain) = 0;
    virtual std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(VorCommon::PersistDomain domain,
                                                                      const char* version) = 0;
    virtual std::shared_ptr<IProtocolOutput> BeginUpdateOutputsMapImpl(VorCommon::PersistDomain domain,
                                                                       const char* version) = 0;
    virtual std::shared_ptr<IProtocolRegisterAssembly>
    BeginUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId, const char* version) = 0;
    virtual void EndUpdateParamsImpl(VorCommon::PersistDomain domain, const char* version) = 0;
    virtual void EndUpdateOutputsMapImpl(VorCommon::PersistDomain domain, const char* version) = 0;
    virtual void EndUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                               const char* version) = 0;
};

} // namespace VorControl::ControlProtocol
