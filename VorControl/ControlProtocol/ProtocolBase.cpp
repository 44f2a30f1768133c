#include "VorControl/ControlProtocol/ProtocolBase.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorCommon/IPlatformAttributes.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/RunCaught.h"
#include "VorControl/ControlProtocol/IProtocolOutput.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "yApi/yStatus.h"

#include <exception>
#include <utility>

namespace VorControl::ControlProtocol {

using VorCommon::PersistDomain;

namespace {

bool IsScannerOptional(const VorCommon::IPlatformAttributes& platform) {
    return platform.IsVorsuiteServiceApp() || platform.IsVorsuiteDaemon() || platform.IsVirtualVorbox() ||
           platform.IsPhysicalVorbox();
}

using DropCountValue = Vor::Properties::Value<long long>;
constexpr const char* DropCountName = "dropCount";

} // namespace

ProtocolBase::ProtocolBase(const ControlProtocolEnviron& environ)
    : id(environ.typeName)
    , displayName(environ.displayName)
    , host(&dynamic_cast<ControlHost&>(*environ.controlHost))
    , properties(&builtInProperties)
    , problemsTracker(host->ProblemsManager(), id)
    , scannerIsOptional(IsScannerOptional(host->PlatformAttributes()))
    , defaultMetrics(true) {
    Vor::ThrowIfFailed(yLock_Construct(propertiesLock.Out()));
    operationEndCallback = host->AddOpEndEventHandler(id, [this](int status) { OpEndEventHandler(status); });
}

ProtocolBase::~ProtocolBase() {
    StopOperationEndEvents();
}

void ProtocolBase::StopOperationEndEvents() noexcept {
    if (operationEndCallback.IsSet()) {
        RunCaught([this] { host->RemoveOpEndEventHandler(id, operationEndCallback); },
                  [](const std::exception& e) { Vor::LogThrown(e, "EXCEPTION THROWN: "); });
    }
}

void ProtocolBase::Init(const ProtocolInitParams& initParams) {
    if (initParams.metrics != nullptr &&
        dynamic_cast<const DropCountValue*>(initParams.metrics->Find(DropCountName)) == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The metrics of %s have no 'dropCount' of the type Value<long long>", displayName);
    }
    if (initParams.nonPersistentProperties != nullptr) {
        properties = initParams.nonPersistentProperties;
    }
    params = initParams.params;
    outputs = initParams.outputs;
    outputsCommandTarget = initParams.outputsCommandTarget;
    metrics = initParams.metrics;
    registerAssemblyGroup = initParams.registerAssemblyGroup;
    deviceManager = initParams.deviceManager;
}

void ProtocolBase::UpdateMetrics() {
    if (metrics != nullptr) {
        Vor::Throw(yERROR_UNIMPLEMENTED,
                   "%s must implement UpdateMetrics() if it has bound in metrics into the control framework",
                   displayName);
    }
}

void ProtocolBase::ResetMetrics() {}

const Vor::Properties::Structure& ProtocolBase::GetMetrics() const {
    return metrics != nullptr ? *metrics : defaultMetrics;
}

const std::string& ProtocolBase::DisplayName() const {
    return displayName;
}

ProtocolStatus ProtocolBase::GetProtocolStatus() const {
    if (properties == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND,
                   "Protocol status not available because non-persistent properties is not available");
    }
    return properties->Status().Get();
}

void ProtocolBase::UpdateProtocolStatus(ProtocolStatus status) {
    properties->Status() = status;
}

void ProtocolBase::UpdateStatusAndRethrow(const std::exception& e, ProtocolStatus status) {
    Vor::LogThrown(e, "EXCEPTION THROWN: ");
    UpdateProtocolStatus(status);
    try {
        throw;
    } catch (const Vor::Exception& caught) {
        Vor::ThrowNested(caught.Status(), caught.what());
    } catch (const std::exception& caught) {
        Vor::ThrowNested(yERROR, caught.what());
    }
}

void ProtocolBase::ParamsUpdate() {}

void ProtocolBase::ParamsReset() {}

Vor::Params::Group& ProtocolBase::Properties() const {
    if (!lockHeld.load(std::memory_order_relaxed)) {
        Vor::Throw(yERROR_STATE);
    }
    return *properties;
}

void ProtocolBase::NonPersistentPropertiesBeginLock() {
    Vor::ThrowIfFailed(yLock_Enter(propertiesLock.Get()));
    lockHeld.store(true, std::memory_order_relaxed);
}

void ProtocolBase::NonPersistentPropertiesEndLock() {
    lockHeld.store(false, std::memory_order_relaxed);
    Vor::ThrowIfFailed(yLock_Exit(propertiesLock.Get()));
}

void ProtocolBase::BeginUpdateParams(const char* /*version*/) {}

void ProtocolBase::EndUpdateParams() {}

Vor::Params::Group& ProtocolBase::Params() const {
    if (params == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return *params;
}

const char* ProtocolBase::ParamsVersion() const {
    return paramsVersion;
}

IProtocol::ParamsInternalUpdateEvent::CallbackId
ProtocolBase::AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler) {
    return paramsInternalUpdate.Add(std::move(handler));
}

void ProtocolBase::RemoveParamsInternalUpdateEventHandler(ParamsInternalUpdateEvent::CallbackId& callback) {
    paramsInternalUpdate.Remove(callback);
}

void ProtocolBase::NotifyParamsInternalUpdateEventHandler(bool persist) {
    paramsInternalUpdate.Raise(persist);
}

IProtocol::OutputsInternalUpdateEvent::CallbackId
ProtocolBase::AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler) {
    return outputsInternalUpdate.Add(std::move(handler));
}

void ProtocolBase::RemoveOutputsInternalUpdateEventHandler(OutputsInternalUpdateEvent::CallbackId& callback) {
    outputsInternalUpdate.Remove(callback);
}

void ProtocolBase::NotifyOutputsInternalUpdateEventHandler(bool persist) {
    outputsInternalUpdate.Raise(persist);
}

IProtocol::PersistenceDomainChangeEvent::CallbackId
ProtocolBase::AddPersistenceDomainChangeEventHandler(std::function<void(PersistDomain)> handler) {
    return persistenceDomainChange.Add(std::move(handler));
}

void ProtocolBase::RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId& callback) {
    persistenceDomainChange.Remove(callback);
}

void ProtocolBase::NotifyPersistenceDomainChangeEventHandler(PersistDomain domain) {
    if (domain == PersistDomain::Job) {
        Vor::LogError("Changing JOB domain from within control service %s is currently not allowed", displayName);
        return;
    }
    persistenceDomainChange.Raise(domain);
}

void ProtocolBase::ProcessResultSets(void* /*resultSets*/) {}

void ProtocolBase::AddControlScanResultsHandler() {
    if (scanResultsCallback.IsSet()) {
        return;
    }
    scanResultsCallback = host->AddScanResultHandler(id, [this](void* resultSets) { ProcessResultSets(resultSets); });
}

void ProtocolBase::RemoveControlScanResultsHandler() {
    if (scanResultsCallback.IsSet()) {
        host->RemoveScanResultHandler(id, scanResultsCallback);
    }
}

void ProtocolBase::OutputsUpdate() {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

bool ProtocolBase::HasProtocolOutput() const {
    return outputs != nullptr;
}

IProtocolOutput& ProtocolBase::Outputs() const {
    if (outputs == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return *outputs;
}

bool ProtocolBase::HasOutputsCommandTarget() const {
    return outputsCommandTarget != nullptr;
}

VorCommon::ICommandTarget& ProtocolBase::OutputsCommandTarget() const {
    if (outputsCommandTarget == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return *outputsCommandTarget;
}

void ProtocolBase::SetForwardScanResultsToProtocol(bool enable) {
    host->SetForwardScanResultsToService(id, enable);
}

const IProtocolRegisterAssemblyGroup& ProtocolBase::Group() const {
    if (registerAssemblyGroup == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return *registerAssemblyGroup;
}

VorCommon::ICommandTarget* ProtocolBase::CommandTarget() {
    return nullptr;
}

void ProtocolBase::RegisterAssemblyUpdate(const char* /*assemblyId*/) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

bool ProtocolBase::HasRegisterAssemblyCommandTarget() const {
    return HasRegisterAssemblyGroup();
}

VorCommon::ICommandTarget& ProtocolBase::RegisterAssemblyCommandTarget(const char* assemblyId) const {
    if (!HasRegisterAssemblyGroup()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return registerAssemblyGroup->CommandTarget(assemblyId);
}

bool ProtocolBase::HasRegisterAssemblyGroup() const {
    return registerAssemblyGroup != nullptr && !registerAssemblyGroup->Empty();
}

bool ProtocolBase::HasRegisterAssembly(const char* assemblyId) const {
    return registerAssemblyGroup != nullptr && registerAssemblyGroup->HasRegisterAssembly(assemblyId);
}

std::shared_ptr<IProtocolRegisterAssembly> ProtocolBase::RegisterAssembly(const char* assemblyId) const {
    return Group().RegisterAssembly(assemblyId);
}

std::vector<std::string> ProtocolBase::RegisterAssemblyList() const {
    return Group().List();
}

void ProtocolBase::ConfigureDefaultRegisterAssembly() {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

std::vector<std::string> ProtocolBase::DataSourceList() const {
    if (registerAssemblyGroup != nullptr) {
        return registerAssemblyGroup->DataSourceList();
    }
    return HasProtocolOutput() ? Outputs().DataSourceList() : DeviceDataSourceList();
}

std::vector<std::string> ProtocolBase::DeviceDataSourceList() const {
    return HasDeviceManager() ? DeviceManager().DataSourceList() : std::vector<std::string>();
}

bool ProtocolBase::HasDeviceManager() const {
    return deviceManager != nullptr;
}

IControlDeviceManager& ProtocolBase::DeviceManager() const {
    if (deviceManager == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return *deviceManager;
}

void ProtocolBase::OnPreStartScan() {
    scanningStopped.store(false, std::memory_order_relaxed);
    if (metrics != nullptr) {
        lastDropCount.store(DropCount(), std::memory_order_relaxed);
    }
    ScanStateChangeImpl(true);
}

void ProtocolBase::OnPostStopScan() {
    scanningStopped.store(true, std::memory_order_relaxed);
    ScanStateChangeImpl(false);
}

std::uint64_t ProtocolBase::DropCount() const {
    const auto& dropCount = dynamic_cast<const DropCountValue&>(metrics->At(DropCountName));
    return static_cast<std::uint64_t>(dropCount.Get());
}

void ProtocolBase::ScanStateChangeImpl(bool /*started*/) {}

void ProtocolBase::OnFactoryRestore() {}

bool ProtocolBase::HasPersistOption(PersistDomain domain, ProtocolPersistOptions option) const {
    return (PersistOptions(domain) & option) != ProtocolPersistOptions::None;
}

void ProtocolBase::OnPersistDomainLoaded(PersistDomain /*domain*/) {}

nlohmann::json& ProtocolBase::WorkspacePersistData() {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

ProtocolPersistOptions ProtocolBase::PersistOptions(PersistDomain domain) const {
    if (domain != PersistDomain::Job) {
        return ProtocolPersistOptions::None;
    }
    return ProtocolPersistOptions::Params | ProtocolPersistOptions::OutputsMap |
           ProtocolPersistOptions::RegisterAssemblies | ProtocolPersistOptions::DeviceManager;
}

IControlHost& ProtocolBase::GetControlHost() {
    return *host;
}

const IControlHost& ProtocolBase::GetControlHost() const {
    return *host;
}

} // namespace VorControl::ControlProtocol
