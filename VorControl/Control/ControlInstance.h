#pragma once

#include "VorCommon/IUpdateGate.h"
#include "VorCommon/ProblemsManager.h"
#include "VorCommon/ProblemsTracker.h"
#include "VorControl/Control/ControlInstanceMetrics.h"
#include "VorControl/Control/ControlInstanceParams.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/ControlProtocol/IProtocol.h"

namespace VorControl {

/// Wraps one service. Its destructor doesn't stop the service, which stops in its own destructor.
class ControlInstance : public IControlInstance {
public:
    explicit ControlInstance(const ControlInstanceParams& params);
    ~ControlInstance() override;

    ControlInstance(const ControlInstance&) = delete;
    ControlInstance& operator=(const ControlInstance&) = delete;

    const ControlInfo& Info() const override;
    const std::string& TypeName() const override;
    const std::string& Id() const override;
    const std::string& DisplayName() const override;
    void Enable(bool on) override;
    bool IsEnabled() const override;
    ControlProtocol::ProtocolStatus GetProtocolStatus() const override;

    ParamsUpdatedEvent::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) override;
    void RemoveParamsUpdatedEventHandler(ParamsUpdatedEvent::CallbackId& callback) override;
    OutputsUpdatedEvent::CallbackId
    AddOutputsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) override;
    void RemoveOutputsUpdatedEventHandler(OutputsUpdatedEvent::CallbackId& callback) override;
    RegisterAssemblyUpdatedEvent::CallbackId AddRegisterAssemblyUpdatedEventHandler(
        std::function<void(const std::string&, const std::string&)> handler) override;
    void RemoveRegisterAssemblyUpdatedEventHandler(RegisterAssemblyUpdatedEvent::CallbackId& callback) override;
    PersistenceDomainChangeEvent::CallbackId
    AddPersistenceDomainChangeEventHandler(std::function<void(VorCommon::PersistDomain)> handler) override;
    void RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId& callback) override;
    AvailableDeviceListUpdatedEvent::CallbackId
    AddAvailableDeviceListUpdatedEventHandler(std::function<void(const std::string&)> handler) override;
    void RemoveAvailableDeviceListUpdatedEventHandler(AvailableDeviceListUpdatedEvent::CallbackId& callback) override;
    DeviceRegisterAssemblyUpdatedEvent::CallbackId AddDeviceRegisterAssemblyUpdatedEventHandler(
        std::function<void(const std::string&, const std::string&, const std::string&, const std::string&)> handler)
        override;
    void
    RemoveDeviceRegisterAssemblyUpdatedEventHandler(DeviceRegisterAssemblyUpdatedEvent::CallbackId& callback) override;
    DeviceUpdatedEvent::CallbackId
    AddDeviceUpdatedEventHandler(std::function<void(const std::string&, const std::string&, bool)> handler) override;
    void RemoveDeviceUpdatedEventHandler(DeviceUpdatedEvent::CallbackId& callback) override;
    DeviceRemovedEvent::CallbackId
    AddDeviceRemovedEventHandler(std::function<void(const std::string&, const std::string&, bool)> handler) override;
    void RemoveDeviceRemovedEventHandler(DeviceRemovedEvent::CallbackId& callback) override;

    std::shared_ptr<Vor::Params::Group> BeginUpdateParameters() override;
    void EndUpdateParameters() override;
    std::shared_ptr<ControlProtocol::IProtocolOutput> BeginUpdateOutputsMap() override;
    void EndUpdateOutputsMap() override;
    void BeginUpdateRegisterAssembly() override;
    std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly>
    BeginUpdateRegisterAssembly(const char* assemblyId) override;
    void EndUpdateRegisterAssembly(const char* assemblyId) override;
    void BeginUpdateDeviceRegisterAssembly() override;
    void EndUpdateDeviceRegisterAssembly(const std::string& deviceId, const std::string& portId,
                                         const std::string& assemblyId) override;

    VorCommon::IMetricsKeeper& MetricsKeeper() override;
    const VorCommon::IMetricsSource& MetricsSource() override;

    Vor::Params::Group& Properties() const override;
    void NonPersistentPropertiesBeginLock() override;
    void NonPersistentPropertiesEndLock() override;

    std::shared_ptr<Vor::Params::Group> Params() const override;
    const char* ParamsVersion() const override;
    void ParamsUpdate() override;

    bool HasProtocolOutput() const override;
    void OutputsMapBeginLock() override;
    void OutputsMapEndLock() override;
    Vor::Params::Group& OutputsMap() const override;
    bool HasOutputsCommandTarget() const override;
    VorCommon::ICommandTarget& OutputsCommandTarget() const override;
    void OutputsUpdate() override;

    bool HasRegisterAssemblyCommandTarget() const override;
    VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const override;
    bool HasRegisterAssemblyGroup() const override;
    bool HasRegisterAssembly(const char* assemblyId) const override;
    std::shared_ptr<ControlProtocol::IProtocolRegisterAssembly> RegisterAssembly(const char* assemblyId) const override;
    std::vector<std::string> RegisterAssemblyList() const override;
    void RegisterAssemblyBeginLock(const char* assemblyId) override;
    void RegisterAssemblyEndLock(const char* assemblyId) override;
    void RegisterAssemblyUpdate(const char* assemblyId) override;

    bool HasDeviceManager() const override;
    IControlDeviceManager& DeviceManager() const override;
    void BeginUpdateDeviceManager() override;
    void EndUpdateDeviceManager() override;
    void DeviceManagerBeginLock() override;
    void DeviceManagerEndLock() override;

    void ResetInstance(bool keepEnabled, DataToReset data) override;

    VorCommon::ICommandTarget* CommandTarget() override;

    void OnPreStartScan() override;
    void OnPostStopScan() override;
    void OnFactoryRestore() override;
    void OnPersistDomainLoaded(VorCommon::PersistDomain domain) override;
    nlohmann::json& WorkspacePersistData() override;
    bool HasPersistOption(VorCommon::PersistDomain domain,
                          ControlProtocol::ProtocolPersistOptions option) const override;
    std::shared_ptr<Providers::IControlPersistenceProvider> PersistenceProvider() const override;
    void ResetProtocolToDefaultEnabledState() override;
    bool ProtocolAutoEnableSetting() const override;
    std::optional<EnableFailure> LastEnableFailure() const override;
    EnabledEvent::CallbackId AddEnabledEventHandler(std::function<void(const std::string&)> handler) override;
    void RemoveEnabledEventHandler(EnabledEvent::CallbackId& callback) override;

    /// Whether the status is running, starting or failed-to-stop.
    bool IsProtocolRunning() const;

private:
    void StartProtocol();
    void StopProtocol();
    /// Calls the operation. A Vor::Exception of it is added as a problem with `problemText`, and thrown on.
    void RunTracked(void (ControlProtocol::IProtocol::*operation)(), const char* problemText);
    /// Adds a problem and ends the tracker's run.
    void EndWithProblem(const char* problemText, const char* reason);
    /// Calls the work and returns its failure. One that isn't a std::exception is added as a problem.
    template <class Work>
    std::optional<EnableFailure> FailureOf(const Work& work, const char* problemText);
    /// Logs a failure, so that Enable always records the enabled state.
    void RemoveScanResultsHandler();
    void ProtocolParamsInternalUpdateHandler(bool persist);
    void ProtocolOutputsInternalUpdateHandler(bool persist);
    void ProtocolPersistenceDomainChangeHandler(VorCommon::PersistDomain domain);
    void BindControlDeviceManagerEventHandlers();
    void UnbindControlDeviceManagerEventHandlers();
    void SelectedDeviceRemovedHandler(const std::string& deviceId, bool persist);
    void SelectedDeviceUpdatedHandler(const std::string& deviceId);
    /// Fails with yERROR_UNIMPLEMENTED without a device manager.
    IControlDeviceManager::AvailableListUpdatedEvent& AvailableListEvent() const;
    /// Enters the gate and calls the operation. If that throws, the gate is left.
    template <class Operation>
    auto BeginUpdate(const Operation& operation);
    /// The job domain's group; empty when there is none.
    std::shared_ptr<ControlProtocol::IProtocolRegisterAssemblyGroup> DomainGroup() const;
    void RequireRegisterAssemblyGroup() const;
    /// The job domain's output map. Fails with yERROR_UNIMPLEMENTED without one.
    ControlProtocol::IProtocolOutput& Outputs() const;
    void UpdateScanResult();

    const ControlInfo& info;
    bool autoEnable = false; ///< the default of the enabled state
    bool enabled = false;    ///< the argument of the last Enable
    std::optional<EnableFailure> lastFailure;
    std::string id;
    std::string displayName;
    std::shared_ptr<ControlProtocol::IProtocol> protocol;
    VorCommon::IUpdateGate& updateGate;
    IControlScanResults& scanResults;
    ParamsUpdatedEvent paramsUpdated;
    OutputsUpdatedEvent outputsUpdated;
    RegisterAssemblyUpdatedEvent registerAssemblyUpdated;
    PersistenceDomainChangeEvent persistenceDomainChange;
    DeviceRegisterAssemblyUpdatedEvent deviceRegisterAssemblyUpdated;
    DeviceUpdatedEvent deviceUpdated;
    DeviceRemovedEvent deviceRemoved;
    EnabledEvent enabledEvent;
    ControlInstanceMetrics metrics;
    VorCommon::ProblemsManager* problemsManager;
    VorCommon::ProblemsTracker problemsTracker;
    ControlProtocol::IProtocol::ParamsInternalUpdateEvent::CallbackId paramsCallback;
    ControlProtocol::IProtocol::OutputsInternalUpdateEvent::CallbackId outputsCallback;
    ControlProtocol::IProtocol::PersistenceDomainChangeEvent::CallbackId domainCallback;
    IControlDeviceManager::DeviceRemovedEvent::CallbackId deviceRemovedCallback;
    IControlDeviceManager::DeviceUpdatedEvent::CallbackId deviceUpdatedCallback;
};

} // namespace VorControl
