#pragma once

#include "Vor/Structure.h"
#include "VorControl/Control/ControlHost.h"
#include "VorControl/ControlProtocol/ControlProtocolEnviron.h"
#include "VorControl/ControlProtocol/IProtocol.h"
#include "VorControl/ControlProtocol/NonPersistentProperties.h"
#include "VorControl/ControlProtocol/ProtocolInitParams.h"
#include "yApi/yLock.h"

#include <atomic>
#include <cstdint>

namespace VorControl::ControlProtocol {

/// What a service derives from. The derived constructor calls Init once; the derived class implements Start and Stop
/// and overrides what it needs. Its destructor leaves no thread of its own running, since nobody calls Stop before it,
/// and the parts of this class go after it.
class ProtocolBase : public IProtocol {
public:
    using NonPersistentProperties = ControlProtocol::NonPersistentProperties;

    /// Fails with a bad cast unless the host is a ControlHost.
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

    void RegisterAssemblyUpdate(const char* assemblyId) override;
    bool HasRegisterAssemblyGroup() const override;
    bool HasRegisterAssembly(const char* assemblyId) const override;
    std::shared_ptr<IProtocolRegisterAssembly> RegisterAssembly(const char* assemblyId) const override;
    std::vector<std::string> RegisterAssemblyList() const override;
    void ConfigureDefaultRegisterAssembly() override;

    /// Of the bound group, empty or not; without one there are no data sources.
    std::vector<std::string> DataSourceList() const override;

    void OnPreStartScan() override;
    void OnPostStopScan() override;
    void OnFactoryRestore() override;

    bool HasPersistOption(VorCommon::PersistDomain domain, ProtocolPersistOptions option) const override;
    void OnPersistDomainLoaded(VorCommon::PersistDomain domain) override;
    nlohmann::json& WorkspacePersistData() override;
    ProtocolPersistOptions PersistOptions(VorCommon::PersistDomain domain) const override;

    IControlHost& GetControlHost() override;
    const IControlHost& GetControlHost() const override;
    /// The bound metrics, else an empty structure.
    const Vor::Properties::Structure& GetMetrics() const override;

protected:
    void ScanStateChangeImpl(bool started) override;

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
    /// Good only while enabled, so each Start sets it anew.
    void SetForwardScanResultsToProtocol(bool enable);
    /// Whether the platform may have no scanner of its own.
    bool ScannerIsOptional() const { return scannerIsOptional; }
    bool ScanningStopped() const { return scanningStopped.load(std::memory_order_relaxed); }
    /// The drop count of the bound metrics when the scan was last started.
    std::uint64_t LastDropCount() const { return lastDropCount; }

private:
    const IProtocolRegisterAssemblyGroup& Group() const;

    const char* const paramsVersion = "1";
    std::atomic<bool> running = false;
    std::string id;
    std::string displayName;
    ControlHost* host;
    NonPersistentProperties builtInProperties;
    NonPersistentProperties* properties;
    /// Guards the values of `properties`: the framework holds it while it reads them, the service while it changes
    /// them. Nothing else is locked under it.
    yLock propertiesLock = nullptr;
    std::atomic<bool> lockHeld = false;
    Vor::Params::Group* params = nullptr;
    Vor::Properties::Structure* metrics = nullptr;
    IProtocolRegisterAssemblyGroup* registerAssemblyGroup = nullptr;
    Vor::Event<void*>::CallbackId scanResultsCallback;
    ParamsInternalUpdateEvent paramsInternalUpdate;
    OutputsInternalUpdateEvent outputsInternalUpdate;
    PersistenceDomainChangeEvent persistenceDomainChange;
    std::uint64_t lastDropCount = 0;
    bool scannerIsOptional;
    std::atomic<bool> scanningStopped = true;
    Vor::Properties::Structure defaultMetrics;
};

} // namespace VorControl::ControlProtocol
