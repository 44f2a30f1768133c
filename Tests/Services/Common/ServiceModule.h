#pragma once

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/MemoryStore.h"
#include "Tests/Support/ServiceProperties.h"
#include "Tests/Support/TestService.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/AtScopeEnd.h"
#include "VorControl/Control/ControlModule.h"
#include "VorControl/Control/IControlInstance.h"

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

namespace Services::Common {

/// The entry of the user's log for parameters of a job that a service can't use.
inline std::string UnusableParams(const std::string& service, const std::string& reason) {
    return service + " can't use its parameters: " + reason + ".";
}

/// A service in a module, as in an application.
template <class Service>
class ServiceModule {
public:
    ServiceModule() {
        plugin.Add(Tests::TestPlugin::Info("test"),
                   [this](const VorControl::ControlProtocol::ControlProtocolEnviron& record) {
                       auto made = std::make_shared<Service>(record);
                       service = made.get();
                       return made;
                   });
        plugin.Publish(plugins);
        module = std::make_unique<VorControl::ControlModule>(plugins, environ.router, environ.Record());
    }

    Service& Own() { return *service; }
    VorControl::IControlInstance& Instance() { return module->Manager().GetInstance("test"); }

    /// Loads a job in which the service has this section.
    void Load(const nlohmann::json& section) {
        store.files["/controls/test/config.json"] = nlohmann::json({{"version", "1"}, {"vor:control", section}}).dump();
        module->Manager().LoadPersistDomain(VorCommon::PersistDomain::Job, store);
    }
    /// Loads a job that has nothing for the service.
    void LoadWithoutSection() {
        store.files.clear();
        module->Manager().LoadPersistDomain(VorCommon::PersistDomain::Job, store);
    }
    nlohmann::json Save() {
        store.files.clear();
        module->Manager().SavePersistDomain(VorCommon::PersistDomain::Job, store);
        return nlohmann::json::parse(store.files.at("/controls/test/config.json")).at("vor:control");
    }
    void Reset() { module->Manager().InitPersistDomain(VorCommon::PersistDomain::Job, store); }

    /// Changes parameters as a user does.
    void Change(const nlohmann::json& values) {
        const auto params = Instance().BeginUpdateParameters();
        const Vor::AtScopeEnd end([this] { Instance().EndUpdateParameters(); });
        Vor::Properties::JsonSerializer::Deserialize(*params, values);
        Instance().ParamsUpdate();
    }

    nlohmann::json Properties() { return Tests::PropertiesOf(Instance()); }
    nlohmann::json Params() { return Vor::Properties::JsonSerializer::Serialize(*Instance().Params()); }

    Tests::ControlEnviron environ;
    Tests::MemoryStore store;

private:
    VorPlugin::PluginManager plugins;
    Tests::TestPlugin plugin;
    Service* service = nullptr;
    std::unique_ptr<VorControl::ControlModule> module;
};

} // namespace Services::Common
