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
class IControlHost;
}

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

/// The contract between the framework and a control service. Services derive from ProtocolBase, which gives each
/// operation but Start and Stop a default. "Not implemented" is a Vor::Exception with yERROR_UNIMPLEMENTED, "not found"
/// one with yERROR_NOT_FOUND, both without a text.
class IProtocol : public VorCommon::IMetricsKeeper, public VorCommon::IMetricsSource {
public:
    using ParamsInternalUpdateEvent = Vor::Event<bool>;
    using OutputsInternalUpdateEvent = Vor::Event<bool>;
    using PersistenceDomainChangeEvent = Vor::Event<VorCommon::PersistDomain>;

    ~IProtocol() override = default;

    virtual const std::string& DisplayName() const = 0;
    /// Needs no lock.
    virtual ProtocolStatus GetProtocolStatus() const = 0;

    /// Called after the parameters were changed from outside, on the thread that changed them, inside the update gate.
    virtual void ParamsUpdate() = 0;
    virtual void ParamsReset() = 0;

    /// Called on the main loop or on the persistence thread while the main loop waits for it, inside the update gate:
    /// never wait here for another thread that needs the gate or the main loop. A failure is thrown, after the status
    /// was set. May be called on a service that is started, which then starts anew with its present parameters.
    virtual void Start() = 0;
    /// As Start. Within 200 ms; no client is served and no thread of the service runs when it returns.
    virtual void Stop() = 0;

    /// Only between the two lock operations; fails with yERROR_STATE otherwise. The reference is good until EndLock.
    virtual Vor::Params::Group& Properties() const = 0;
    /// Never nest: the inner end closes the outer bracket too.
    virtual void NonPersistentPropertiesBeginLock() = 0;
    virtual void NonPersistentPropertiesEndLock() = 0;

    virtual void BeginUpdateParams(const char* version) = 0;
    virtual void EndUpdateParams() = 0;
    /// Not found when the service has none.
    virtual Vor::Params::Group& Params() const = 0;
    virtual const char* ParamsVersion() const = 0;

    /// The flag of the event says whether the change is to be persisted. A removal clears the id, and ignores an
    /// unset one.
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
    /// A service can't report the job domain as changed: that one is logged and raises nothing.
    virtual void NotifyPersistenceDomainChangeEventHandler(VorCommon::PersistDomain domain) = 0;

    /// Called after the output map was changed from outside. Not implemented by default.
    virtual void OutputsUpdate() = 0;
    virtual bool HasProtocolOutput() const = 0;
    virtual IProtocolOutput& Outputs() const = 0;
    virtual bool HasOutputsCommandTarget() const = 0;
    virtual VorCommon::ICommandTarget& OutputsCommandTarget() const = 0;

    /// Called on the service's own dispatcher thread with a yArrayList of ResultSet handles, at least one, in order of
    /// arrival. The list and its sets are valid only during the call; take a share of what is to be kept. Must not
    /// add or remove scan result handlers, nor set the forwarding or the filtering of scan results.
    virtual void ProcessResultSets(void* resultSets) = 0;
    /// A second call adds nothing.
    virtual void AddControlScanResultsHandler() = 0;
    /// Waits for a batch that is being processed.
    virtual void RemoveControlScanResultsHandler() = 0;

    /// Called after the assembly of that id was changed from outside. Not implemented by default.
    virtual void RegisterAssemblyUpdate(const char* assemblyId) = 0;
    virtual bool HasRegisterAssemblyCommandTarget() const = 0;
    virtual VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const = 0;
    /// Whether a group is bound that isn't empty.
    virtual bool HasRegisterAssemblyGroup() const = 0;
    virtual bool HasRegisterAssembly(const char* assemblyId) const = 0;
    virtual std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* assemblyId) const = 0;
    virtual std::vector<std::string> RegisterAssemblyList() const = 0;
    virtual void ConfigureDefaultRegisterAssembly() = 0;

    /// The names of the data sources that the service needs; the scan results are filtered by them.
    virtual std::vector<std::string> DataSourceList() const = 0;

    virtual void OnPreStartScan() = 0;
    virtual void OnPostStopScan() = 0;
    virtual void OnFactoryRestore() = 0;

    /// Of the last operation of this service that has ended: 0 there was none, 2 it succeeded, 3 it failed.
    virtual std::uint8_t CompletedOperationStatus() const = 0;

    /// Whether the domain's options have any bit of `option`.
    virtual bool HasPersistOption(VorCommon::PersistDomain domain, ProtocolPersistOptions option) const = 0;
    virtual void OnPersistDomainLoaded(VorCommon::PersistDomain domain) = 0;
    /// The document that is kept in the workspace domain; read when it is saved, assigned when it is loaded.
    virtual nlohmann::json& WorkspacePersistData() = 0;
    virtual ProtocolPersistOptions PersistOptions(VorCommon::PersistDomain domain) const = 0;

    // What a service answers for each domain that a persistence provider keeps for it. Where an object isn't there, it
    // is an empty pointer. A version is never null but where that is said; the empty one is of a file that tells none.
    // What ends an update or resets a part of the job domain sets the filter of the scan results anew.

    /// As DataSourceList(), from the objects of the domain.
    virtual std::vector<std::string> DataSourceList(VorCommon::PersistDomain domain) = 0;
    virtual std::shared_ptr<Vor::Params::Group> Params(VorCommon::PersistDomain domain) const = 0;
    /// Null when the service doesn't keep parameters in the domain.
    virtual const char* ParamsVersion(VorCommon::PersistDomain domain) const = 0;
    /// Whether parameters of this other version can be brought to the present one.
    virtual bool SupportedParamsVersion(VorCommon::PersistDomain domain, const char* version) const = 0;
    virtual void ParamsReset(VorCommon::PersistDomain domain) = 0;
    /// Whether the values have changed the set of parameters itself, so that the document must be applied again.
    virtual bool UpdateDynamicParams(VorCommon::PersistDomain domain) = 0;
    /// The parameters to change, in the form that this version had. Pairs with EndUpdateParams unless it is empty.
    virtual std::shared_ptr<Vor::Params::Group> BeginUpdateParams(VorCommon::PersistDomain domain,
                                                                  const char* version) = 0;
    virtual void EndUpdateParams(VorCommon::PersistDomain domain, const char* version) = 0;

    virtual std::shared_ptr<IProtocolOutput> Outputs(VorCommon::PersistDomain domain) = 0;
    virtual void OutputsMapReset(VorCommon::PersistDomain domain) = 0;
    /// The map to change. Pairs with EndUpdateOutputsMap unless it is empty.
    virtual std::shared_ptr<IProtocolOutput> BeginUpdateOutputsMap(VorCommon::PersistDomain domain,
                                                                   const char* version) = 0;
    virtual void EndUpdateOutputsMap(VorCommon::PersistDomain domain, const char* version) = 0;

    virtual std::shared_ptr<IProtocolRegisterAssemblyGroup> RegisterAssemblyGroup(VorCommon::PersistDomain domain) = 0;
    virtual void RegisterAssemblyGroupReset(VorCommon::PersistDomain domain) = 0;
    /// Null when the service doesn't keep the assembly in the domain.
    virtual const char* RegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId) = 0;
    /// Whether the assembly of this other version can be brought to the present one.
    virtual bool SupportedRegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId,
                                                  const char* version) = 0;
    /// The assembly to change. Pairs with EndUpdateRegisterAssembly unless it is empty.
    virtual std::shared_ptr<IProtocolRegisterAssembly>
    BeginUpdateRegisterAssembly(VorCommon::PersistDomain domain, const char* assemblyId, const char* version) = 0;
    virtual void EndUpdateRegisterAssembly(VorCommon::PersistDomain domain, const char* assemblyId,
                                           const char* version) = 0;
    /// Empty: the framework keeps what the operations without a domain give.
    virtual std::shared_ptr<Providers::IControlPersistenceProvider> PersistenceProvider() = 0;

    virtual IControlHost& GetControlHost() = 0;
    virtual const IControlHost& GetControlHost() const = 0;

protected:
    /// The scan is about to start (true) or has stopped (false).
    virtual void ScanStateChangeImpl(bool started) = 0;
    /// An operation of this service has ended, with yOK or the status of its failure, and the command status tells so
    /// already. Called on the operations thread, or on the one that handed over the command: must not wait for either,
    /// and must not destroy the service. The next operation may be started here.
    virtual void OperationEndEventImpl(int status) = 0;

    /// The work behind the operations of the same names.
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
