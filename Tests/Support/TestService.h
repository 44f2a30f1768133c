#pragma once

#include "VorControl/Control/ControlInfo.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/IControlFactory.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorPlugin/PluginManager.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace Tests {

/// A service that records its calls, and runs the hooks that a test sets.
class TestService : public VorControl::ControlProtocol::ProtocolBase {
public:
    using ProtocolStatus = VorControl::ControlProtocol::ProtocolStatus;
    using Hook = std::function<void()>;

    explicit TestService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {
        VorControl::ControlProtocol::ProtocolInitParams init;
        init.params = &params;
        init.registerAssemblyGroup = &assemblies;
        Init(init);
    }

    ~TestService() override {
        StopOperationEndEvents();
        Note("destroy", onDestroy);
    }

    void Start() override { Note("Start", onStart); }
    void Stop() override { Note("Stop", onStop); }
    void ParamsUpdate() override { Note("ParamsUpdate", onParamsUpdate); }
    void ParamsReset() override { Note("ParamsReset", onParamsReset); }
    using ProtocolBase::ParamsVersion;
    const char* ParamsVersion() const override {
        if (onParamsVersion) {
            onParamsVersion();
        }
        return ProtocolBase::ParamsVersion();
    }
    void AddControlScanResultsHandler() override {
        Note("AddControlScanResultsHandler", onAddHandler);
        ProtocolBase::AddControlScanResultsHandler();
    }
    void RemoveControlScanResultsHandler() override {
        Note("RemoveControlScanResultsHandler", onRemoveHandler);
        ProtocolBase::RemoveControlScanResultsHandler();
    }
    void ProcessResultSets(void* resultSets) override {
        if (onResultSets) {
            onResultSets(resultSets);
        }
    }
    VorCommon::ICommandTarget* CommandTarget() override { return commandTarget; }
    void RegisterAssemblyUpdate(const char* assemblyId) override {
        Note(std::string("RegisterAssemblyUpdate ") + assemblyId, {});
    }
    void ConfigureDefaultRegisterAssembly() override { Note("ConfigureDefaultRegisterAssembly", {}); }
    void OnFactoryRestore() override { Note("OnFactoryRestore", onFactoryRestore); }
    void OnPersistDomainLoaded(VorCommon::PersistDomain domain) override {
        Note(std::string("OnPersistDomainLoaded ") + VorCommon::PersistDomain_Name(domain), {});
    }
    nlohmann::json& WorkspacePersistData() override { return *workspaceData; }

    /// The operations that a service calls of its base class.
    using ProtocolBase::Id;
    using ProtocolBase::Init;
    using ProtocolBase::IsRunning;
    using ProtocolBase::LastDropCount;
    using ProtocolBase::ScannerIsOptional;
    using ProtocolBase::ScanningStopped;
    using ProtocolBase::SetForwardScanResultsToProtocol;
    using ProtocolBase::SetIsRunning;
    using ProtocolBase::UpdateProtocolStatus;
    using ProtocolBase::UpdateStatusAndRethrow;

    Vor::Params::Group params;
    VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup assemblies;
    std::shared_ptr<nlohmann::json> workspaceData; ///< a test that needs it sets it
    VorCommon::ICommandTarget* commandTarget = nullptr;
    std::vector<std::string> calls;
    /// The same calls with the id in front. Several services may share it.
    std::shared_ptr<std::vector<std::string>> sharedCalls;
    Hook onStart;
    Hook onStop;
    Hook onParamsUpdate;
    Hook onParamsReset;
    Hook onParamsVersion;
    Hook onAddHandler;
    Hook onRemoveHandler;
    Hook onFactoryRestore;
    Hook onScanState;
    Hook onDestroy;
    std::function<void(void*)> onResultSets;

protected:
    void ScanStateChangeImpl(bool started) override { Note(started ? "scan started" : "scan stopped", onScanState); }

private:
    void Note(const std::string& call, const Hook& hook) {
        calls.push_back(call);
        if (sharedCalls) {
            sharedCalls->push_back(Id() + ": " + call);
        }
        if (hook) {
            hook();
        }
    }
};

/// A factory made of a function.
class TestFactory : public VorControl::IControlFactory {
public:
    using Function = std::function<std::shared_ptr<VorControl::ControlProtocol::IProtocol>(
        const VorControl::ControlProtocol::ControlProtocolEnviron&)>;

    explicit TestFactory(Function function)
        : function(std::move(function)) {}

    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return function(environ);
    }

private:
    Function function;
};

/// The test program itself as a plug-in library: add types, then publish it.
class TestPlugin {
public:
    TestPlugin& Add(const VorControl::ControlInfo& info, TestFactory::Function function) {
        plugin->Add(info, std::make_shared<TestFactory>(std::move(function)));
        return *this;
    }

    /// Adds a type whose service is a TestService. `made` points to the service during its lifetime.
    TestPlugin& Add(const std::string& typeName, std::weak_ptr<TestService>& made,
                    std::function<void(TestService&)> prepare = {}) {
        return Add(Info(typeName),
                   [&made, prepare](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
                       auto service = std::make_shared<TestService>(environ);
                       made = service;
                       if (prepare) {
                           prepare(*service);
                       }
                       return service;
                   });
    }

    const VorPlugin::PluginLib& Publish(VorPlugin::PluginManager& plugins) {
        auto lib = std::make_unique<VorPlugin::PluginLib>("");
        lib->Add(plugin);
        return plugins.Add(std::move(lib));
    }

    static VorControl::ControlInfo Info(const std::string& typeName) {
        VorControl::ControlInfo info;
        info.SetTypeName(typeName.c_str()).SetDisplayName((typeName + " service").c_str());
        return info;
    }

    std::shared_ptr<VorControl::ControlPlugin> plugin = VorControl::ControlPlugin::Create();
};

} // namespace Tests
