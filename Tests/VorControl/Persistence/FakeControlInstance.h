#pragma once

#include "Vor/Exception.h"
#include "VorApi/Params/Value.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Control/ControlInstanceMetrics.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "VorControl/Providers/IControlPersistenceProvider.h"
#include "yApi/yStatus.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace Tests {

class FakeParams : public Vor::Params::Group {
public:
    FakeParams() {
        Register("port", port);
        Register("name", name);
    }

    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<std::string> name;
};

/// Records its calls, and fails in those for which a test sets an action.
class FakeControlInstance : public VorControl::IControlInstance {
public:
    /// Where its configuration lies in a store.
    static constexpr const char* Path = "/controls/fake/config.json";

    using Group = Vor::Params::Group;
    using Options = VorControl::ControlProtocol::ProtocolPersistOptions;
    using Status = VorControl::ControlProtocol::ProtocolStatus;
    using Assembly = VorControl::ControlProtocol::IProtocolRegisterAssembly;

    const VorControl::ControlInfo& Info() const override { return info; }
    const std::string& TypeName() const override { return typeName; }
    const std::string& Id() const override { return id; }
    const std::string& DisplayName() const override { return displayName; }

    void Enable(bool on) override {
        Note(on ? "Enable true" : "Enable false");
        enabled = on;
        status = on ? Status::Running : Status::Stopped;
    }
    bool IsEnabled() const override { return enabled; }
    Status GetProtocolStatus() const override {
        if (onStatus) {
            onStatus();
        }
        return status;
    }

    ParamsUpdatedEvent::CallbackId
    AddParamsUpdatedEventHandler(std::function<void(const std::string&, bool)>) override {
        return {};
    }
    void RemoveParamsUpdatedEventHandler(ParamsUpdatedEvent::CallbackId&) override {}
    OutputsUpdatedEvent::CallbackId
    AddOutputsUpdatedEventHandler(std::function<void(const std::string&, bool)>) override {
        return {};
    }
    void RemoveOutputsUpdatedEventHandler(OutputsUpdatedEvent::CallbackId&) override {}
    RegisterAssemblyUpdatedEvent::CallbackId
    AddRegisterAssemblyUpdatedEventHandler(std::function<void(const std::string&, const std::string&)>) override {
        return {};
    }
    void RemoveRegisterAssemblyUpdatedEventHandler(RegisterAssemblyUpdatedEvent::CallbackId&) override {}
    PersistenceDomainChangeEvent::CallbackId
    AddPersistenceDomainChangeEventHandler(std::function<void(VorCommon::PersistDomain)>) override {
        return {};
    }
    void RemovePersistenceDomainChangeEventHandler(PersistenceDomainChangeEvent::CallbackId&) override {}
    AvailableDeviceListUpdatedEvent::CallbackId
    AddAvailableDeviceListUpdatedEventHandler(std::function<void(const std::string&)>) override {
        return {};
    }
    void RemoveAvailableDeviceListUpdatedEventHandler(AvailableDeviceListUpdatedEvent::CallbackId&) override {}
    DeviceRegisterAssemblyUpdatedEvent::CallbackId AddDeviceRegisterAssemblyUpdatedEventHandler(
        std::function<void(const std::string&, const std::string&, const std::string&, const std::string&)>) override {
        return {};
    }
    void RemoveDeviceRegisterAssemblyUpdatedEventHandler(DeviceRegisterAssemblyUpdatedEvent::CallbackId&) override {}
    DeviceUpdatedEvent::CallbackId
    AddDeviceUpdatedEventHandler(std::function<void(const std::string&, const std::string&, bool)>) override {
        return {};
    }
    void RemoveDeviceUpdatedEventHandler(DeviceUpdatedEvent::CallbackId&) override {}
    DeviceRemovedEvent::CallbackId
    AddDeviceRemovedEventHandler(std::function<void(const std::string&, const std::string&, bool)>) override {
        return {};
    }
    void RemoveDeviceRemovedEventHandler(DeviceRemovedEvent::CallbackId&) override {}

    std::shared_ptr<Group> BeginUpdateParameters() override {
        Note("BeginUpdateParameters");
        ++gateDepth;
        return params;
    }
    void EndUpdateParameters() override {
        --gateDepth;
        Note("EndUpdateParameters");
    }
    std::shared_ptr<VorControl::ControlProtocol::IProtocolOutput> BeginUpdateOutputsMap() override {
        Note("BeginUpdateOutputsMap");
        ++gateDepth;
        return nullptr;
    }
    void EndUpdateOutputsMap() override {
        --gateDepth;
        Note("EndUpdateOutputsMap");
    }
    void BeginUpdateRegisterAssembly() override {
        Note("BeginUpdateRegisterAssembly");
        ++gateDepth;
    }
    std::shared_ptr<Assembly> BeginUpdateRegisterAssembly(const char* assemblyId) override {
        Note(std::string("BeginUpdateRegisterAssembly ") + assemblyId);
        ++gateDepth;
        return assemblies.at(assemblyId);
    }
    void EndUpdateRegisterAssembly(const char* assemblyId) override {
        --gateDepth;
        Note(std::string("EndUpdateRegisterAssembly ") + assemblyId);
    }
    void BeginUpdateDeviceRegisterAssembly() override {}
    void EndUpdateDeviceRegisterAssembly(const std::string&, const std::string&, const std::string&) override {}

    VorCommon::IMetricsKeeper& MetricsKeeper() override { return metrics; }
    const VorCommon::IMetricsSource& MetricsSource() override { return metrics; }

    Group& Properties() const override { Vor::Throw(yERROR_STATE); }
    void NonPersistentPropertiesBeginLock() override {}
    void NonPersistentPropertiesEndLock() override {}

    std::shared_ptr<Group> Params() const override {
        Note("Params");
        return params;
    }
    const char* ParamsVersion() const override { return "1"; }
    void ParamsUpdate() override { Note("ParamsUpdate"); }

    bool HasProtocolOutput() const override { return false; }
    void OutputsMapBeginLock() override { Note("OutputsMapBeginLock"); }
    void OutputsMapEndLock() override { Note("OutputsMapEndLock"); }
    Group& OutputsMap() const override { Vor::Throw(yERROR_UNIMPLEMENTED); }
    bool HasOutputsCommandTarget() const override { return false; }
    VorCommon::ICommandTarget& OutputsCommandTarget() const override { Vor::Throw(yERROR_UNIMPLEMENTED); }
    void OutputsUpdate() override { Note("OutputsUpdate"); }

    bool HasRegisterAssemblyCommandTarget() const override { return hasGroup; }
    VorCommon::ICommandTarget& RegisterAssemblyCommandTarget(const char* assemblyId) const override {
        return assemblies.at(assemblyId)->CommandTarget();
    }
    bool HasRegisterAssemblyGroup() const override { return hasGroup; }
    bool HasRegisterAssembly(const char* assemblyId) const override { return assemblies.count(assemblyId) != 0; }
    std::shared_ptr<Assembly> RegisterAssembly(const char* assemblyId) const override {
        Note(std::string("RegisterAssembly ") + assemblyId);
        return assemblies.at(assemblyId);
    }
    std::vector<std::string> RegisterAssemblyList() const override {
        Note("RegisterAssemblyList");
        std::vector<std::string> ids;
        for (const auto& [assemblyId, assembly] : assemblies) {
            ids.push_back(assemblyId);
        }
        return ids;
    }
    void RegisterAssemblyBeginLock(const char* assemblyId) override {
        Note(std::string("RegisterAssemblyBeginLock ") + assemblyId);
        assemblies.at(assemblyId)->BeginLock();
    }
    void RegisterAssemblyEndLock(const char* assemblyId) override {
        assemblies.at(assemblyId)->EndLock();
        Note(std::string("RegisterAssemblyEndLock ") + assemblyId);
    }
    void RegisterAssemblyUpdate(const char* assemblyId) override {
        Note(std::string("RegisterAssemblyUpdate ") + assemblyId);
    }

    bool HasDeviceManager() const override { return deviceManager != nullptr; }
    VorControl::IControlDeviceManager& DeviceManager() const override { return *deviceManager; }
    void BeginUpdateDeviceManager() override {}
    void EndUpdateDeviceManager() override {}
    void DeviceManagerBeginLock() override { deviceManager->BeginLock(); }
    void DeviceManagerEndLock() override { deviceManager->EndLock(); }

    void ResetInstance(bool keepEnabled, DataToReset data) override {
        Note(std::string("ResetInstance ") + (keepEnabled ? "true " : "false ") +
             std::to_string(static_cast<int>(data)));
    }

    VorCommon::ICommandTarget* CommandTarget() override { return nullptr; }

    void OnPreStartScan() override {}
    void OnPostStopScan() override {}
    void OnFactoryRestore() override {}
    void OnPersistDomainLoaded(VorCommon::PersistDomain domain) override {
        Note(std::string("OnPersistDomainLoaded ") + VorCommon::PersistDomain_Name(domain));
    }
    nlohmann::json& WorkspacePersistData() override {
        Note("WorkspacePersistData");
        return workspaceData;
    }
    bool HasPersistOption(VorCommon::PersistDomain domain, Options option) const override {
        if (domain != VorCommon::PersistDomain::Job || (option == Options::All && !answersAllOptions)) {
            return false;
        }
        return (options & option) != Options::None;
    }
    std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> PersistenceProvider() const override {
        return provider;
    }
    void ResetProtocolToDefaultEnabledState() override { Note("ResetProtocolToDefaultEnabledState"); }
    bool ProtocolAutoEnableSetting() const override { return autoEnable; }
    std::optional<VorControl::EnableFailure> LastEnableFailure() const override { return std::nullopt; }
    EnabledEvent::CallbackId AddEnabledEventHandler(std::function<void(const std::string&)>) override { return {}; }
    void RemoveEnabledEventHandler(EnabledEvent::CallbackId&) override {}

    std::string typeName = "fake";
    std::string id = "fake";
    std::string displayName = "Fake Service";
    bool enabled = false;
    Status status = Status::Stopped;
    Options options = static_cast<Options>(23);
    bool answersAllOptions = true;
    std::shared_ptr<FakeParams> params = std::make_shared<FakeParams>();
    bool hasGroup = true;
    std::map<std::string, std::shared_ptr<Assembly>> assemblies;
    VorControl::IControlDeviceManager* deviceManager = nullptr;
    nlohmann::json workspaceData;
    VorControl::ControlInstanceMetrics metrics;
    std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> provider;
    bool autoEnable = false;
    int gateDepth = 0;

    std::function<void()> onStatus;
    /// By call; run after the call is recorded.
    std::map<std::string, std::function<void()>> actions;
    mutable std::vector<std::string> calls;

private:
    void Note(const std::string& call) const {
        calls.push_back(call);
        const auto action = actions.find(call);
        if (action != actions.end()) {
            action->second();
        }
    }

    VorControl::ControlInfo info;
};

} // namespace Tests
