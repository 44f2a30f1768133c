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

/// The base class of services. The constructor of the derived class calls Init once. The derived class implements Start
/// and Stop and overrides further operations where needed. Its destructor ends its threads, since the framework doesn't
/// call Stop before it. If it overrides OperationEndEventImpl, its destructor calls StopOperationEndEvents first.
class ProtocolBase : public IProtocol {
public:
    using NonPersistentProperties = ControlProtocol::NonPersistentProperties;

    /// Throws std::bad_cast unless the host is a ControlHost. No operation of a service of the same id may be running:
    /// its end would be reported to this service before the constructor of the derived class has run.
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

    VorCommon::ICommandTarget* CommandTarget() override;

    void RegisterAssemblyUpdate(const char* assemblyId) override;
    bool HasRegisterAssemblyCommandTarget() const override;
    VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const override;
    bool HasRegisterAssemblyGroup() const override;
    bool HasRegisterAssembly(const char* assemblyId) const override;
    std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* assemblyId) const override;
    std::vector<std::string> RegisterAssemblyList() const override;
    void ConfigureDefaultRegisterAssembly() override;

    bool HasDeviceManager() const override;
    IControlDeviceManager& DeviceManager() const override;

    /// The data sources of the group of register assemblies if there is one, otherwise those of the output map,
    /// otherwise those of the devices.
    std::vector<std::string> DataSourceList() const override;

    void OnPreStartScan() override;
    void OnPostStopScan() override;
    void OnFactoryRestore() override;

    std::uint8_t CompletedOperationStatus() const override;

    bool HasPersistOption(VorCommon::PersistDomain domain, ProtocolPersistOptions option) const override;
    void OnPersistDomainLoaded(VorCommon::PersistDomain domain) override;
    nlohmann::json& WorkspacePersistData() override;
    ProtocolPersistOptions PersistOptions(VorCommon::PersistDomain domain) const override;

    /// The data sources of the domain's group if there is one, otherwise those of its output map, otherwise those of
    /// the devices.
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
    /// An empty structure if the service has no metrics.
    const Vor::Properties::Structure& GetMetrics() const override;

protected:
    void ScanStateChangeImpl(bool started) override;
    void OperationEndEventImpl(int status) override;
    // A service with a persistence provider overrides these. They do nothing, and return false or an empty pointer.

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

    /// Stores the pointers, also null ones; null properties don't replace the built-in ones. Throws yERROR_PARAMETER,
    /// and stores nothing, for metrics without a `dropCount` of the right type.
    void Init(const ProtocolInitParams& initParams);
    const std::string& Id() const { return id; }
    void SetIsRunning(bool value) { running.store(value, std::memory_order_relaxed); }
    bool IsRunning() const { return running.load(std::memory_order_relaxed); }
    /// Enters no lock. Call it in Start and Stop only.
    void UpdateProtocolStatus(ProtocolStatus status);
    /// Call it only in the handler of `e`. Logs `e`, sets the status, and throws a Vor::Exception with the text and the
    /// status of `e`, or yERROR if it has none, and with `e` nested in it.
    [[noreturn]] void UpdateStatusAndRethrow(const std::exception& e, ProtocolStatus status);

    /// Runs a client's command. Commands that act on the sensor end later, on the operations thread; the others end
    /// before this returns. Each end is reported to OperationEndEventImpl. Check OperationInProgress first: a command
    /// that is passed in while another one runs fails, and its end clears OperationInProgress too early. Throws only
    /// exceptions that aren't a std::exception, and what OperationEndEventImpl throws after a failure.
    void ProcessReceivedCommonCommands(const ControlRegisterCommandData& data);
    /// Whether a polled command is the same as the last one: the same id, and the same text if the command has one.
    static bool IsDuplicateCommand(const ControlRegisterCommandData& last, const ControlRegisterCommandData& current);
    /// For the client: 0 no command completed yet, 1 in progress, 2 the last one succeeded, 3 it failed. May be called
    /// on any thread.
    std::uint8_t GetCommandStatus() const;
    void SetOperationInProgress(bool value) { operationInProgress.store(value, std::memory_order_release); }
    bool OperationInProgress() const { return operationInProgress.load(std::memory_order_acquire); }
    /// When the last software trigger of this service was accepted, as a yTime_Monotonic: what the sensor publishes for
    /// it is published later, and what it has published for earlier operations was published before. 0 when there was
    /// none.
    std::uint64_t BeginOfLastTrigger() const;
    void OperationCompleted(int status);
    void OpEndEventHandler(int status);
    /// After it has returned, OperationEndEventImpl isn't called any more for operations on the sensor. Waits for a
    /// call that is running, so it must not be called in OperationEndEventImpl. A failure is logged.
    void StopOperationEndEvents() noexcept;

    /// Reports a problem to the user if messages were dropped since the start of the scan, otherwise removes it. A null
    /// text means the default one. Uses `dropCount` of the service's metrics; does nothing if there are none.
    void CheckControlDrops(const char* text);
    /// Removes the problems that this service has reported.
    void ClearAllProblems();

    /// The setting is lost when the service is disabled, so call it in each Start.
    void SetForwardScanResultsToProtocol(bool enable);
    /// Whether the platform may be without a scanner.
    bool ScannerIsOptional() const { return scannerIsOptional; }
    bool ScanningStopped() const { return scanningStopped.load(std::memory_order_relaxed); }
    /// The drop count of the service's metrics at the last start of the scan.
    std::uint64_t LastDropCount() const { return lastDropCount.load(std::memory_order_relaxed); }

private:
    const IProtocolRegisterAssemblyGroup& Group() const;
    /// Empty without a device manager.
    std::vector<std::string> DeviceDataSourceList() const;
    /// For the job domain: sets the filter of the scan results to its data sources.
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
    /// them. No other lock is entered under it.
    Vor::Handle<yLock, yLock_Destroy> propertiesLock;
    std::atomic<bool> lockHeld = false;
    Vor::Params::Group* params = nullptr;
    IProtocolOutput* outputs = nullptr;
    VorCommon::ICommandTarget* outputsCommandTarget = nullptr;
    Vor::Properties::Structure* metrics = nullptr;
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
    IControlDeviceManager* deviceManager = nullptr;
    Vor::Event<void*>::CallbackId scanResultsCallback;
    ParamsInternalUpdateEvent paramsInternalUpdate;
    OutputsInternalUpdateEvent outputsInternalUpdate;
    PersistenceDomainChangeEvent persistenceDomainChange;
    /// Set by the thread that passes in a command. Cleared by the thread that ends the command, after it has set
    /// `completedOperationStatus`.
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
