#include "VorControl/Control/ControlInstance.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Control/ControlText.h"
#include "VorControl/Control/IControlScanResults.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "VorControl/Providers/IControlPersistenceProvider.h"
#include "yApi/yStatus.h"

#include <exception>
#include <utility>

namespace VorControl {

using ControlProtocol::IProtocol;
using ControlProtocol::IProtocolOutput;
using ControlProtocol::IProtocolRegisterAssembly;
using ControlProtocol::IProtocolRegisterAssemblyGroup;
using ControlProtocol::ProtocolStatus;
using VorCommon::PersistDomain;

namespace {

constexpr int UpdateFlag = 1;

constexpr const char* StartProblem = "Could not start service: %s";
constexpr const char* StopProblem = "%1$s";

} // namespace

ControlInstance::ControlInstance(const ControlInstanceParams& params)
    : info(*params.info)
    , id(params.typeName)
    , displayName(params.displayName)
    , protocol(params.protocol)
    , updateGate(*params.updateGate)
    , scanResults(*params.scanResults)
    , problemsManager(params.problemsManager)
    , problemsTracker(params.problemsManager, id) {
    metrics.BindProtocol(protocol.get());
    paramsCallback = protocol->AddParamsInternalUpdateEventHandler(
        [this](bool persist) { ProtocolParamsInternalUpdateHandler(persist); });
    outputsCallback = protocol->AddOutputsInternalUpdateEventHandler(
        [this](bool persist) { ProtocolOutputsInternalUpdateHandler(persist); });
    domainCallback = protocol->AddPersistenceDomainChangeEventHandler(
        [this](VorCommon::PersistDomain domain) { ProtocolPersistenceDomainChangeHandler(domain); });
    BindControlDeviceManagerEventHandlers();
}

ControlInstance::~ControlInstance() {
    Vor::CleanUp([this] {
        protocol->RemoveControlScanResultsHandler();
        UnbindControlDeviceManagerEventHandlers();
        protocol->RemoveParamsInternalUpdateEventHandler(paramsCallback);
        protocol->RemoveOutputsInternalUpdateEventHandler(outputsCallback);
        protocol->RemovePersistenceDomainChangeEventHandler(domainCallback);
        metrics.ClearProtocol();
    });
}

const ControlInfo& ControlInstance::Info() const {
    return info;
}

const std::string& ControlInstance::TypeName() const {
    return info.TypeName();
}

const std::string& ControlInstance::Id() const {
    return id;
}

const std::string& ControlInstance::DisplayName() const {
    return displayName;
}

void ControlInstance::Enable(bool on) {
    if (on) {
        lastFailure = FailureOf(
            [this] {
                protocol->AddControlScanResultsHandler();
                StartProtocol();
            },
            StartProblem);
        if (lastFailure) {
            RemoveScanResultsHandler();
            Vor::LogWarning("Protocol (%s) failed to start (%s).", id, lastFailure->text);
        }
    } else {
        lastFailure = FailureOf([this] { StopProtocol(); }, StopProblem);
        if (lastFailure) {
            Vor::LogWarning("Protocol (%s) failed to stop (%s).", id, lastFailure->text);
        }
        RemoveScanResultsHandler();
    }
    enabled = on;
    enabledEvent.Raise(id);
}

template <class Work>
std::optional<EnableFailure> ControlInstance::FailureOf(const Work& work, const char* problemText) {
    try {
        work();
        return std::nullopt;
    } catch (const std::exception& e) {
        return EnableFailure{Vor::Exception::StatusOf(e), e.what()};
    } catch (...) {
        problemsTracker.Begin();
        EndWithProblem(problemText, UnknownException);
        return EnableFailure{yERROR, UnknownException};
    }
}

std::optional<EnableFailure> ControlInstance::LastEnableFailure() const {
    return lastFailure;
}

bool ControlInstance::IsEnabled() const {
    return enabled;
}

ProtocolStatus ControlInstance::GetProtocolStatus() const {
    return protocol->GetProtocolStatus();
}

bool ControlInstance::IsProtocolRunning() const {
    const ProtocolStatus status = GetProtocolStatus();
    return status == ProtocolStatus::Running || status == ProtocolStatus::Starting ||
           status == ProtocolStatus::FailedToStop;
}

void ControlInstance::StartProtocol() {
    RunTracked(&IProtocol::Start, StartProblem);
}

void ControlInstance::StopProtocol() {
    RunTracked(&IProtocol::Stop, StopProblem);
}

void ControlInstance::RunTracked(void (IProtocol::*operation)(), const char* problemText) {
    problemsTracker.Begin();
    try {
        ((*protocol).*operation)();
    } catch (const Vor::Exception& e) {
        EndWithProblem(problemText, e.what());
        Vor::ThrowNested(e.Status(), e.what());
    }
    problemsTracker.End();
}

void ControlInstance::EndWithProblem(const char* problemText, const char* reason) {
    if (problemsManager != nullptr) {
        problemsTracker.Register(problemsManager->Add(1, ControlText("Protocol"), ControlText(problemText), reason));
    }
    problemsTracker.End();
}

void ControlInstance::RemoveScanResultsHandler() {
    RunCaught([this] { protocol->RemoveControlScanResultsHandler(); },
              [](const std::exception& e) { Vor::LogThrown(e, "EXCEPTION THROWN: "); });
}

ControlInstance::ParamsUpdatedEvent::CallbackId
ControlInstance::AddParamsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) {
    return paramsUpdated.Add(std::move(handler));
}

void ControlInstance::RemoveParamsUpdatedEventHandler(ParamsUpdatedEvent::CallbackId& callback) {
    paramsUpdated.Remove(callback);
}

ControlInstance::OutputsUpdatedEvent::CallbackId
ControlInstance::AddOutputsUpdatedEventHandler(std::function<void(const std::string&, bool)> handler) {
    return outputsUpdated.Add(std::move(handler));
}

void ControlInstance::RemoveOutputsUpdatedEventHandler(OutputsUpdatedEvent::CallbackId& callback) {
    outputsUpdated.Remove(callback);
}

ControlInstance::RegisterAssemblyUpdatedEvent::CallbackId ControlInstance::AddRegisterAssemblyUpdatedEventHandler(
    std::function<void(const std::string&, const std::string&)> handler) {
    return registerAssemblyUpdated.Add(std::move(handler));
}

void ControlInstance::RemoveRegisterAssemblyUpdatedEventHandler(RegisterAssemblyUpdatedEvent::CallbackId& callback) {
    registerAssemblyUpdated.Remove(callback);
}

ControlInstance::PersistenceDomainChangeEvent::CallbackId
ControlInstance::AddPersistenceDomainChangeEventHandler(std::function<void(VorCommon::PersistDomain)> handler) {
    return persistenceDomainChange.Add(std::move(handler));
}

void ControlInstance::RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId& callback) {
    persistenceDomainChange.Remove(callback);
}

ControlInstance::AvailableDeviceListUpdatedEvent::CallbackId
ControlInstance::AddAvailableDeviceListUpdatedEventHandler(std::function<void(const std::string&)> handler) {
    return AvailableListEvent().Add(std::move(handler));
}

void ControlInstance::RemoveAvailableDeviceListUpdatedEventHandler(
    AvailableDeviceListUpdatedEvent::CallbackId& callback) {
    AvailableListEvent().Remove(callback);
}

IControlDeviceManager::AvailableListUpdatedEvent& ControlInstance::AvailableListEvent() const {
    if (!HasDeviceManager()) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    return DeviceManager().AvailableDeviceListUpdatedEvent();
}

ControlInstance::DeviceRegisterAssemblyUpdatedEvent::CallbackId
ControlInstance::AddDeviceRegisterAssemblyUpdatedEventHandler(
    std::function<void(const std::string&, const std::string&, const std::string&, const std::string&)> handler) {
    return deviceRegisterAssemblyUpdated.Add(std::move(handler));
}

void ControlInstance::RemoveDeviceRegisterAssemblyUpdatedEventHandler(
    DeviceRegisterAssemblyUpdatedEvent::CallbackId& callback) {
    deviceRegisterAssemblyUpdated.Remove(callback);
}

ControlInstance::DeviceUpdatedEvent::CallbackId ControlInstance::AddDeviceUpdatedEventHandler(
    std::function<void(const std::string&, const std::string&, bool)> handler) {
    return deviceUpdated.Add(std::move(handler));
}

void ControlInstance::RemoveDeviceUpdatedEventHandler(DeviceUpdatedEvent::CallbackId& callback) {
    deviceUpdated.Remove(callback);
}

ControlInstance::DeviceRemovedEvent::CallbackId ControlInstance::AddDeviceRemovedEventHandler(
    std::function<void(const std::string&, const std::string&, bool)> handler) {
    return deviceRemoved.Add(std::move(handler));
}

void ControlInstance::RemoveDeviceRemovedEventHandler(DeviceRemovedEvent::CallbackId& callback) {
    deviceRemoved.Remove(callback);
}

ControlInstance::EnabledEvent::CallbackId
ControlInstance::AddEnabledEventHandler(std::function<void(const std::string&)> handler) {
    return enabledEvent.Add(std::move(handler));
}

void ControlInstance::RemoveEnabledEventHandler(EnabledEvent::CallbackId& callback) {
    enabledEvent.Remove(callback);
}

void ControlInstance::ProtocolParamsInternalUpdateHandler(bool persist) {
    paramsUpdated.Raise(id, persist);
}

void ControlInstance::ProtocolOutputsInternalUpdateHandler(bool persist) {
    outputsUpdated.Raise(id, persist);
}

void ControlInstance::ProtocolPersistenceDomainChangeHandler(VorCommon::PersistDomain domain) {
    persistenceDomainChange.Raise(domain);
}

void ControlInstance::BindControlDeviceManagerEventHandlers() {
    if (!HasDeviceManager()) {
        return;
    }
    deviceRemovedCallback = DeviceManager().SelectedDeviceRemovedEvent().Add(
        [this](const ControlSelectedDeviceProp&, const std::string& deviceId, bool persist) {
            SelectedDeviceRemovedHandler(deviceId, persist);
        });
    deviceUpdatedCallback = DeviceManager().SelectedDeviceUpdatedEvent().Add(
        [this](const ControlSelectedDeviceProp&, const std::string& deviceId) {
            SelectedDeviceUpdatedHandler(deviceId);
        });
}

// The manager raises these events with its lock held, so with the lock a handler that runs is waited for.
void ControlInstance::UnbindControlDeviceManagerEventHandlers() {
    if (!HasDeviceManager()) {
        return;
    }
    const DeviceManagerLock lock(DeviceManager());
    DeviceManager().SelectedDeviceRemovedEvent().Remove(deviceRemovedCallback);
    DeviceManager().SelectedDeviceUpdatedEvent().Remove(deviceUpdatedCallback);
}

void ControlInstance::SelectedDeviceRemovedHandler(const std::string& deviceId, bool persist) {
    deviceRemoved.Raise(id, deviceId, persist);
}

void ControlInstance::SelectedDeviceUpdatedHandler(const std::string& deviceId) {
    deviceUpdated.Raise(id, deviceId, false);
}

template <class Operation>
auto ControlInstance::BeginUpdate(const Operation& operation) {
    updateGate.Enter(UpdateFlag);
    try {
        return operation();
    } catch (...) {
        Vor::CleanUp([this] { updateGate.Leave(UpdateFlag); });
        throw;
    }
}

std::shared_ptr<Vor::Params::Group> ControlInstance::BeginUpdateParameters() {
    return BeginUpdate([&] {
        const char* const version = protocol->ParamsVersion(PersistDomain::Job);
        auto domainParams = version != nullptr ? protocol->BeginUpdateParams(PersistDomain::Job, version) : nullptr;
        return domainParams != nullptr ? domainParams : Params();
    });
}

void ControlInstance::EndUpdateParameters() {
    const Vor::AtScopeEnd leaveGate([this] { updateGate.Leave(UpdateFlag); });
    if (const char* const version = protocol->ParamsVersion(PersistDomain::Job)) {
        protocol->EndUpdateParams(PersistDomain::Job, version);
    }
    paramsUpdated.Raise(id, true);
}

std::shared_ptr<IProtocolOutput> ControlInstance::BeginUpdateOutputsMap() {
    return BeginUpdate([&] { return protocol->BeginUpdateOutputsMap(PersistDomain::Job, ""); });
}

void ControlInstance::EndUpdateOutputsMap() {
    const Vor::AtScopeEnd leaveGate([this] { updateGate.Leave(UpdateFlag); });
    protocol->EndUpdateOutputsMap(PersistDomain::Job, "");
    outputsUpdated.Raise(id, true);
}

void ControlInstance::BeginUpdateRegisterAssembly() {
    updateGate.Enter(UpdateFlag);
}

std::shared_ptr<IProtocolRegisterAssembly> ControlInstance::BeginUpdateRegisterAssembly(const char* assemblyId) {
    return BeginUpdate([&] {
        const char* const version = protocol->RegisterAssemblyVersion(PersistDomain::Job, assemblyId);
        return version != nullptr ? protocol->BeginUpdateRegisterAssembly(PersistDomain::Job, assemblyId, version)
                                  : nullptr;
    });
}

void ControlInstance::EndUpdateRegisterAssembly(const char* assemblyId) {
    const Vor::AtScopeEnd leaveGate([this] { updateGate.Leave(UpdateFlag); });
    if (const char* const version = protocol->RegisterAssemblyVersion(PersistDomain::Job, assemblyId)) {
        protocol->EndUpdateRegisterAssembly(PersistDomain::Job, assemblyId, version);
    }
    registerAssemblyUpdated.Raise(id, assemblyId);
}

void ControlInstance::BeginUpdateDeviceRegisterAssembly() {
    updateGate.Enter(UpdateFlag);
}

void ControlInstance::EndUpdateDeviceRegisterAssembly(const std::string& deviceId, const std::string& portId,
                                                      const std::string& assemblyId) {
    const Vor::AtScopeEnd leaveGate([this] { updateGate.Leave(UpdateFlag); });
    deviceRegisterAssemblyUpdated.Raise(id, deviceId, portId, assemblyId);
}

VorCommon::IMetricsKeeper& ControlInstance::MetricsKeeper() {
    return metrics;
}

const VorCommon::IMetricsSource& ControlInstance::MetricsSource() {
    return metrics;
}

Vor::Params::Group& ControlInstance::Properties() const {
    return protocol->Properties();
}

void ControlInstance::NonPersistentPropertiesBeginLock() {
    protocol->NonPersistentPropertiesBeginLock();
}

void ControlInstance::NonPersistentPropertiesEndLock() {
    protocol->NonPersistentPropertiesEndLock();
}

std::shared_ptr<Vor::Params::Group> ControlInstance::Params() const {
    auto domainParams = protocol->Params(PersistDomain::Job);
    return domainParams != nullptr ? domainParams : std::shared_ptr<Vor::Params::Group>(protocol, &protocol->Params());
}

const char* ControlInstance::ParamsVersion() const {
    return protocol->ParamsVersion();
}

void ControlInstance::ParamsUpdate() {
    protocol->ParamsUpdate();
}

bool ControlInstance::HasProtocolOutput() const {
    return protocol->Outputs(PersistDomain::Job) != nullptr;
}

IProtocolOutput& ControlInstance::Outputs() const {
    const auto outputs = protocol->Outputs(PersistDomain::Job);
    if (outputs == nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    return *outputs;
}

void ControlInstance::OutputsMapBeginLock() {
    if (const auto outputs = protocol->Outputs(PersistDomain::Job)) {
        outputs->BeginLock();
    }
}

void ControlInstance::OutputsMapEndLock() {
    if (const auto outputs = protocol->Outputs(PersistDomain::Job)) {
        outputs->EndLock();
    }
}

Vor::Params::Group& ControlInstance::OutputsMap() const {
    return Outputs().OutputMap();
}

bool ControlInstance::HasOutputsCommandTarget() const {
    return HasProtocolOutput();
}

VorCommon::ICommandTarget& ControlInstance::OutputsCommandTarget() const {
    return Outputs().CommandTarget();
}

void ControlInstance::OutputsUpdate() {
    protocol->OutputsUpdate();
    UpdateScanResult();
}

void ControlInstance::UpdateScanResult() {
    if (!HasProtocolOutput()) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
    scanResults.UpdateOutputMap(id, protocol->DataSourceList());
}

std::shared_ptr<IProtocolRegisterAssemblyGroup> ControlInstance::DomainGroup() const {
    return protocol->RegisterAssemblyGroup(PersistDomain::Job);
}

bool ControlInstance::HasRegisterAssemblyGroup() const {
    return DomainGroup() != nullptr || protocol->HasRegisterAssemblyGroup();
}

bool ControlInstance::HasRegisterAssembly(const char* assemblyId) const {
    const auto group = DomainGroup();
    return group != nullptr ? group->HasRegisterAssembly(assemblyId) : protocol->HasRegisterAssembly(assemblyId);
}

void ControlInstance::RequireRegisterAssemblyGroup() const {
    if (!HasRegisterAssemblyGroup()) {
        Vor::Throw(yERROR_UNIMPLEMENTED);
    }
}

bool ControlInstance::HasRegisterAssemblyCommandTarget() const {
    return HasRegisterAssemblyGroup();
}

VorCommon::ICommandTarget& ControlInstance::RegisterAssemblyCommandTarget(const char* assemblyId) const {
    RequireRegisterAssemblyGroup();
    const auto group = DomainGroup();
    return group != nullptr ? group->CommandTarget(assemblyId) : protocol->RegisterAssemblyCommandTarget(assemblyId);
}

std::shared_ptr<IProtocolRegisterAssembly> ControlInstance::RegisterAssembly(const char* assemblyId) const {
    RequireRegisterAssemblyGroup();
    const auto group = DomainGroup();
    return group != nullptr ? group->RegisterAssembly(assemblyId) : protocol->RegisterAssembly(assemblyId);
}

std::vector<std::string> ControlInstance::RegisterAssemblyList() const {
    RequireRegisterAssemblyGroup();
    const auto group = DomainGroup();
    return group != nullptr ? group->List() : protocol->RegisterAssemblyList();
}

void ControlInstance::RegisterAssemblyBeginLock(const char* assemblyId) {
    if (HasRegisterAssemblyGroup()) {
        protocol->RegisterAssembly(assemblyId)->BeginLock();
    }
}

void ControlInstance::RegisterAssemblyEndLock(const char* assemblyId) {
    if (HasRegisterAssemblyGroup()) {
        protocol->RegisterAssembly(assemblyId)->EndLock();
    }
}

void ControlInstance::RegisterAssemblyUpdate(const char* assemblyId) {
    if (!HasRegisterAssemblyGroup() && !HasDeviceManager()) {
        return;
    }
    protocol->RegisterAssemblyUpdate(assemblyId);
    scanResults.UpdateOutputMap(id, protocol->DataSourceList());
}

bool ControlInstance::HasDeviceManager() const {
    return protocol->HasDeviceManager();
}

IControlDeviceManager& ControlInstance::DeviceManager() const {
    return protocol->DeviceManager();
}

void ControlInstance::BeginUpdateDeviceManager() {
    updateGate.Enter(UpdateFlag);
}

void ControlInstance::EndUpdateDeviceManager() {
    const Vor::AtScopeEnd leaveGate([this] { updateGate.Leave(UpdateFlag); });
    deviceUpdated.Raise(id, std::string(), true);
}

void ControlInstance::DeviceManagerBeginLock() {
    if (HasDeviceManager()) {
        DeviceManager().BeginLock();
    }
}

void ControlInstance::DeviceManagerEndLock() {
    if (HasDeviceManager()) {
        DeviceManager().EndLock();
    }
}

void ControlInstance::ResetInstance(bool keepEnabled, DataToReset data) {
    if (!keepEnabled) {
        Enable(autoEnable);
    }
    if (data == DataToReset::Params || data == DataToReset::All) {
        protocol->ParamsReset();
    }
    if ((data == DataToReset::RegisterAssemblies || data == DataToReset::All) && HasRegisterAssemblyGroup()) {
        protocol->ConfigureDefaultRegisterAssembly();
    }
    if ((data == DataToReset::DeviceManager || data == DataToReset::All) && HasDeviceManager()) {
        DeviceManager().Reset();
    }
}

VorCommon::ICommandTarget* ControlInstance::CommandTarget() {
    return protocol->CommandTarget();
}

void ControlInstance::OnPreStartScan() {
    protocol->OnPreStartScan();
}

void ControlInstance::OnPostStopScan() {
    protocol->OnPostStopScan();
}

void ControlInstance::OnFactoryRestore() {
    protocol->OnFactoryRestore();
}

void ControlInstance::OnPersistDomainLoaded(VorCommon::PersistDomain domain) {
    protocol->OnPersistDomainLoaded(domain);
}

nlohmann::json& ControlInstance::WorkspacePersistData() {
    return protocol->WorkspacePersistData();
}

bool ControlInstance::HasPersistOption(VorCommon::PersistDomain domain,
                                       ControlProtocol::ProtocolPersistOptions option) const {
    return protocol->HasPersistOption(domain, option);
}

std::shared_ptr<Providers::IControlPersistenceProvider> ControlInstance::PersistenceProvider() const {
    return protocol->PersistenceProvider();
}

void ControlInstance::ResetProtocolToDefaultEnabledState() {
    Enable(ProtocolAutoEnableSetting());
}

bool ControlInstance::ProtocolAutoEnableSetting() const {
    return autoEnable;
}

} // namespace VorControl
