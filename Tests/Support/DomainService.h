#pragma once

#include "Tests/VorControl/ControlProtocol/TestAssembly.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorControl/ControlProtocol/StandardOutputs.h"
#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Tests {

class DomainParams : public Vor::Params::Group {
public:
    DomainParams() {
        Register("port", port);
        Register("name", name);
    }

    void Reset() {
        port = 502;
        name = "";
    }

    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<std::string> name;
};

/// A service with a configuration for each domain in `domains`, the same objects for all of them. It records its calls,
/// and runs the functions in `actions`.
class DomainService : public VorControl::ControlProtocol::ProtocolBase {
public:
    using Domain = VorCommon::PersistDomain;
    using Group = Vor::Params::Group;
    using Assembly = VorControl::ControlProtocol::IProtocolRegisterAssembly;
    using Map = VorControl::ControlProtocol::IProtocolOutput;
    using AssemblyGroup = VorControl::ControlProtocol::IProtocolRegisterAssemblyGroup;

    explicit DomainService(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {}

    void Start() override {
        Note("Start");
        UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Running);
    }
    void Stop() override {
        Note("Stop");
        UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Stopped);
    }
    void RegisterAssemblyUpdate(const char* assemblyId) override { Note("RegisterAssemblyUpdate", assemblyId); }

    using ProtocolBase::Params;
    std::shared_ptr<Group> Params(Domain domain) const override { return domains.contains(domain) ? params : nullptr; }
    using ProtocolBase::ParamsVersion;
    const char* ParamsVersion(Domain domain) const override {
        return domains.contains(domain) ? paramsVersion : nullptr;
    }
    bool SupportedParamsVersion(Domain, const char* version) const override { return supported.contains(version); }

    using ProtocolBase::Outputs;
    std::shared_ptr<Map> Outputs(Domain domain) override { return domains.contains(domain) ? outputs : nullptr; }
    void OutputsUpdate() override { Note("OutputsUpdate"); }

    std::shared_ptr<AssemblyGroup> RegisterAssemblyGroup(Domain domain) override {
        Note("RegisterAssemblyGroup");
        return domains.contains(domain) ? group : nullptr;
    }
    const char* RegisterAssemblyVersion(Domain domain, const char* assemblyId) override {
        Note("RegisterAssemblyVersion", assemblyId);
        return domains.contains(domain) ? assemblyVersion : nullptr;
    }
    bool SupportedRegisterAssemblyVersion(Domain, const char*, const char* version) override {
        return supported.contains(version);
    }
    std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> PersistenceProvider() override {
        return provider;
    }

    TestAssembly& AddAssembly(const char* id) {
        const auto assembly = std::make_shared<TestAssembly>(true, 0, 65534, id);
        assembly->WithTypes();
        group->Add(assembly);
        return *assembly;
    }

    TestAssembly& AssemblyOf(const char* id) { return dynamic_cast<TestAssembly&>(*group->RegisterAssembly(id)); }

    void AddOutput(unsigned short id, const std::string& source) {
        VorControl::ControlProtocol::StandardOutputItemArgs args;
        args.outputId = id;
        args.source = source;
        outputs->Add(args);
    }

    /// The calls that change something.
    std::vector<std::string> Changes() const {
        std::vector<std::string> changes;
        for (const std::string& call : calls) {
            if (call.rfind("RegisterAssemblyGroup", 0) != 0 && call.rfind("RegisterAssemblyVersion", 0) != 0) {
                changes.push_back(call);
            }
        }
        return changes;
    }

    std::set<Domain> domains{Domain::Job};
    std::shared_ptr<DomainParams> params = std::make_shared<DomainParams>();
    const char* paramsVersion = "2";
    const char* assemblyVersion = "7";
    /// Further versions that parameters and assemblies support.
    std::set<std::string> supported;
    /// Whether the start of an update returns null.
    bool refusesUpdates = false;
    int dynamicPasses = 0;
    std::shared_ptr<Map> outputs = std::make_shared<VorControl::ControlProtocol::StandardProtocolOutputMap>(4, 0, 100);
    std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup> group =
        std::make_shared<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup>();
    std::shared_ptr<VorControl::Providers::ControlPersistenceProvider> provider =
        std::make_shared<VorControl::Providers::ControlPersistenceProvider>(*this);
    std::vector<std::string> calls;
    /// Functions by call, which run after the call is recorded.
    std::map<std::string, std::function<void()>> actions;

protected:
    void ParamsResetImpl(Domain domain) override {
        Note("ParamsReset", Name(domain));
        params->Reset();
    }
    bool UpdateDynamicParamsImpl(Domain domain) override {
        Note("UpdateDynamicParams", Name(domain));
        return dynamicPasses-- > 0;
    }
    std::shared_ptr<Group> BeginUpdateParamsImpl(Domain domain, const char* version) override {
        Note("BeginUpdateParams", Name(domain), version);
        return refusesUpdates ? nullptr : params;
    }
    void EndUpdateParamsImpl(Domain domain, const char* version) override {
        Note("EndUpdateParams", Name(domain), version);
    }
    void OutputsMapResetImpl(Domain domain) override {
        Note("OutputsReset", Name(domain));
        outputs->Clear();
    }
    std::shared_ptr<Map> BeginUpdateOutputsMapImpl(Domain domain, const char* version) override {
        Note("BeginUpdateOutputsMap", Name(domain), version);
        return refusesUpdates ? nullptr : outputs;
    }
    void EndUpdateOutputsMapImpl(Domain domain, const char* version) override {
        Note("EndUpdateOutputsMap", Name(domain), version);
    }
    void RegisterAssemblyGroupResetImpl(Domain domain) override {
        Note("AssembliesReset", Name(domain));
        for (const std::string& id : group->List()) {
            group->RegisterAssembly(id.c_str())->ResetRegisterAssembly();
        }
    }
    std::shared_ptr<Assembly> BeginUpdateRegisterAssemblyImpl(Domain domain, const char* assemblyId,
                                                              const char* version) override {
        Note("BeginUpdateRegisterAssembly", Name(domain), assemblyId, version);
        return refusesUpdates ? nullptr : group->RegisterAssembly(assemblyId);
    }
    void EndUpdateRegisterAssemblyImpl(Domain domain, const char* assemblyId, const char* version) override {
        Note("EndUpdateRegisterAssembly", Name(domain), assemblyId, version);
    }

private:
    static const char* Name(Domain domain) { return VorCommon::PersistDomain_Name(domain); }

    template <class... Texts>
    void Note(std::string call, const Texts&... texts) {
        ((call += std::string(" ") + texts), ...);
        calls.push_back(call);
        const auto action = actions.find(call);
        if (action != actions.end()) {
            action->second();
        }
    }
};

} // namespace Tests
