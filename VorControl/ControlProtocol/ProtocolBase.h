#pragma once

#include "Vor/Structure.h"
#include "VorApi/Handle.h"
#include "VorCommon/ProblemsTracker.h"
#include "VorControl/Control/ControlHost.h"
#include "VorControl/ControlProtocol/ControlProtocolEnviron.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"
#include "VorControl/ControlProtocol/ProtocolInitParams.h"
#include "yApi/yLock.h"

#include <atomic>
#include <cstdint>

namespace VorControl::ControlProtocol {

/// What a service derives from. The derived constructor calls Init once; the derived class implements Start and Stop
/// and overrides what it needs. Its destructor leaves no thread of its own running, since nobody calls Stop before it,
/// and the parts of this class go after it. A class that overrides OperationEndEventImpl calls StopOperationEndEvents
/// first in its destructor.
class ProtocolBase : public IProtocol {
public:
    using NonPersistentProperties = ControlProtocol::NonPersistentProperties;

    /// Fails with a bad cast unless the host is a ControlHost. No operation may be under way for a service of the same
    /// id: its end would come to this one before the derived constructor has run.
    explicit ProtocolBase(const ControlProtocolEnviron& environ);
    ~ProtocolBase() override;

    ProtocolBase(const ProtocolBase&) = delete;
    ProtocolBase& operator=(const ProtocolBase&) = delete;

    void UpdateMetrics() override;
    void ResetMetrics() override;
    const std::string& DisplayName() const override;
    ProtocolStatus GetProtocolStatus() const override;

    void ParamsUpdate() override;
    void ParamsReset() override;

    Vor::Params::Group& Properties() const override;
    void NonPersistentPropertiesBeginLock() override;
    void NonPersistentPropertiesEndLock() override;

    void BeginUpdateParams(const char* version) override;
    void EndUpdateParams() override;
    Vor::Params::Group& Params() const override;
    const char* ParamsVersion() const override;

    ParamsInternalUpdateEvent::CallbackId
    AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) override;
    void RemoveParamsInternalUpdateEventHandler(ParamsInternalUpdateEvent::CallbackId& callback) override;
    void NotifyParamsInternalUpdateEventHandler(bool persist) override;
    OutputsInternalUpdateEvent::CallbackId
    AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler) override;
    void RemoveOutputsInternalUpdateEventHandler(OutputsInternalUpdateEvent::CallbackId& callback) override;
    void NotifyOutputsInternalUpdateEventHandler(bool persist) override;
    PersistenceDomainChangeEvent::CallbackId
    AddPersistenceDomainChangeEventHandler(std::function<void(VorCommon::PersistDomain)> handler) override;
    void RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId& callback) override;
    void NotifyPersistenceDomainChangeEventHandler(VorCommon::PersistDomain domain) override;

    void ProcessResultSets(void* resultSets) override;
    void AddControlScanResultsHandler() override;
    void RemoveControlScanResultsHandler() override;

    void OutputsUpdate() override;
    bool HasProtocolOutput() const override;
    IProtocolOutput& Outputs() const override;
    bool HasOutputsCommandTarget() const override;
    VorCommon::ICommandTarget& OutputsCommandTarget() const override;

    void RegisterAssemblyUpdate(const char* assemblyId) override;
    bool HasRegisterAssemblyCommandTarget() const override;
    VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const override;
    bool HasRegisterAssemblyGroup() const override;
    bool HasRegisterAssembly(const char* assemblyId) const override;
    std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* assemblyId) const override;
    std::vector<std::string> RegisterAssemblyList() const override;
    void ConfigureDefaultRegisterAssembly() override;

    /// Of the bound group, empty or not; without one those of the bound output map.
    std::vector<std::string> DataSourceList() const override;

    void OnPreStartScan() override;
    void OnPostStopScan() override;
    void OnFactoryRestore() override;

    std::uint8_t CompletedOperationStatus() const override;

    bool HasPersistOption(VorCommon::PersistDomain domain, ProtocolPersistOptions option) const override;
    void OnPersistDomainLoaded(VorCommon::PersistDomain domain) override;
    nlohmann::json& WorkspacePersistData() override;
    ProtocolPersistOptions PersistOptions(VorCommon::PersistDomain domain) const override;

    /// Of the domain's group, empty or not; without one those of its output map.
    std::vector<std::string> DataSourceList(VorCommon::PersistDomain domain) override;
    std::shared_ptr<Vor::Params::Group> Params(VorCommon::PersistDomain domain) const override;
    const char* ParamsVersion(VorCommon::PersistDomain domain) const override;
    bool SupportedParamsVersion(VorCommon::PersistDomain domain, const char* version) const override;
    void ParamsReset(VorCommon::PersistDomain domain) override;
    bool UpdateDynamicParams(VorCommon::PersistDomain domain) override;
    std::shared_ptr<Vor::Params::Group> BeginUpdateParams(VorCommon::PersistDomain domain,
                                                          const char* version) override;
    void EndUpdateParams(VorCommon::PersistDomain domain, const char* version) override;
    std::shared_ptr<IProtocolOutput> Outputs(VorCommon::PersistDomain domain) override;
    void OutputsMapReset(VorCommon::PersistDomain domain) override;
    std::shared_ptr<IProtocolOutput> BeginUpdateOutputsMap(VorCommon::PersistDomain domain,
                                                           const char* version) override;
    void EndUpdateOutputsMap(VorCommon::PersistDomain domain, const char* version) override;
    std::shared_ptr<IProtocolRegisterAssemblyGroup> RegisterAssemblyGroup(VorCommon::PersistDomain domain) override;
    void RegisterAssemblyGroupReset(VorCommon::PersistDomain domain) override;
    const char* RegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId) override;
    bool SupportedRegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId,
                                          const char* version) override;
    std::shared_ptr<IProtocolRegisterAssembly>
    BeginUpdateRegisterAssembly(VorCommon::PersistDomain domain, const char* assemblyId, const char* version) override;
    void EndUpdateRegisterAssembly(VorCommon::PersistDomain domain, const char* assemblyId,
                                   const char* version) override;
    std::shared_ptr<Providers::IControlPersistenceProvider> PersistenceProvider() override;

    IControlHost& GetControlHost() override;
    const IControlHost& GetControlHost() const override;
    /// The bound metrics, else an empty structure.
    const Vor::Properties::Structure& GetMetrics() const override;

protected:
    void ScanStateChangeImpl(bool started) override;
    void OperationEndEventImpl(int status) override;
    /// What a service that has a persistence provider overrides. They do nothing, and give nothing.
    void ParamsResetImpl(VorCommon::PersistDomain domain) override;
    void OutputsMapResetImpl(VorCommon::PersistDomain domain) override;
    void RegisterAssemblyGroupResetImpl(VorCommon::PersistDomain domain) override;
    bool UpdateDynamicParamsImpl(VorCommon::PersistDomain domain) override;
    std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(VorCommon::PersistDomain domain,
                                                              const char* version) override;
    std::shared_ptr<IProtocolOutput> BeginUpdateOutputsMapImpl(VorCommon::PersistDomain domain,
                                                               const char* version) override;
    std::shared_ptr<IProtocolRegisterAssembly> BeginUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain,
                                                                               const char* assemblyId,
                                                                               const char* version) override;
    void EndUpdateParamsImpl(VorCommon::PersistDomain domain, const char* version) override;
    void EndUpdateOutputsMapImpl(VorCommon::PersistDomain domain, const char* version) override;
    void EndUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                       const char* version) override;

    /// Takes the pointers, null ones too, but for the properties.
    void Init(const ProtocolInitParams& initParams);
    const std::string& Id() const { return id; }
    void SetIsRunning(bool value) { running.store(value, std::memory_order_relaxed); }
    bool IsRunning() const { return running.load(std::memory_order_relaxed); }
    /// Takes no lock. Call it in Start and Stop only.
    void UpdateProtocolStatus(ProtocolStatus status);
    /// Only within the handler of `e`: logs it, sets the status, and throws a Vor::Exception with the text of `e`, its
    /// status or 0, and `e` nested in it.
    [[noreturn]] void UpdateStatusAndRethrow(const std::exception& e, ProtocolStatus status);

    /// Runs a client's command. Those that act on the sensor end later, on the operations thread, and the others in
    /// here; each end comes to OperationEndEventImpl. Ask OperationInProgress first: a command that comes while another
    /// runs fails, and its end hides that the other still runs. Throws only what isn't a std::exception, or what
    /// OperationEndEventImpl throws when it is told of a failure.
    void ProcessReceivedCommonCommands(const ControlRegisterCommandData& data);
    /// Whether a polled command is the one that was run last: the same id, and the same text where the id has one.
    static bool IsDuplicateCommand(const ControlRegisterCommandData& last, const ControlRegisterCommandData& current);
    /// For the client: 0 no command completed yet, 1 in progress, 2 the last one succeeded, 3 it failed. Any thread.
    std::uint8_t GetCommandStatus() const;
    void SetOperationInProgress(bool value) { operationInProgress.store(value, std::memory_order_release); }
    bool OperationInProgress() const { return operationInProgress.load(std::memory_order_acquire); }
    void OperationCompleted(int status);
    void OpEndEventHandler(int status);
    /// No end of an operation comes to this service any more; waits for one that is being told. Not from
    /// OperationEndEventImpl. A failure is logged.
    void StopOperationEndEvents();

    /// Shows a problem to the user when messages were dropped since the start of the scan, and withdraws it when none
    /// were. A null text stands for the common one. Reads `dropCount` of the bound metrics; without them it does
    /// nothing.
    void CheckControlDrops(const char* text);
    /// Withdraws the problems that this service shows to the user.
    void ClearAllProblems();

    /// Good only while enabled, so each Start sets it anew.
    void SetForwardScanResultsToProtocol(bool enable);
    /// Whether the platform may have no scanner of its own.
    bool ScannerIsOptional() const { return scannerIsOptional; }
    bool ScanningStopped() const { return scanningStopped.load(std::memory_order_relaxed); }
    /// The drop count of the bound metrics when the scan was last started.
    std::uint64_t LastDropCount() const { return lastDropCount.load(std::memory_order_relaxed); }

private:
    const IProtocolRegisterAssemblyGroup& Group() const;
    /// Sets the filter of the scan results to what the domain needs, if it is the job domain.
    void RefreshScanResults(VorCommon::PersistDomain domain);
    std::uint64_t DropCount() const;
    void RunCommand(const ControlRegisterCommandData& data);
    void WriteUserData(const ControlRegisterCommandData& data);

    const char* const paramsVersion = "1";
    std::atomic<bool> running = false;
    std::string id;
    std::string displayName;
    ControlHost* host;
    NonPersistentProperties builtInProperties;
    NonPersistentProperties* properties;
    /// Guards the values of `properties`: the framework holds it while it reads them, the service while it changes
    /// them. Nothing else is locked under it.
    Vor::Handle<yLock, yLock_Destroy> propertiesLock;
    std::atomic<bool> lockHeld = false;
    Vor::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    VorCommon::ICommandTarget* outputsCommandTarget = nullptr;
    Vor::Properties::Structure* metrics = nullptr;
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
    Vor::Event<void*>::CallbackId scanResultsCallback;
    ParamsInternalUpdateEvent paramsInternalUpdate;
    OutputsInternalUpdateEvent outputsInternalUpdate;
    PersistenceDomainChangeEvent persistenceDomainChange;
    /// Set by the thread that hands over a command, cleared by the one that ends it, with the status before it.
    std::atomic<bool> operationInProgress = false;
    std::atomic<std::uint8_t> completedOperationStatus = 0;
    Vor::Event<int>::CallbackId operationEndCallback;
    VorCommon::ProblemsTracker problemsTracker;
    std::atomic<std::uint64_t> lastDropCount = 0;
    bool scannerIsOptional;
    std::atomic<bool> scanningStopped = true;
    Vor::Properties::Structure defaultMetrics;
};

} // namespace VorControl::ControlProtocol
