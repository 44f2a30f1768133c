#pragma once

#include "Services/Common/PluginEntry.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"

#include <functional>
#include <memory>
#include <string>

/// What the plug-ins with service types are made of.
namespace Fixture {

/// A service that calls a function at its start and does nothing else.
class Service : public VorControl::ControlProtocol::ProtocolBase {
public:
    Service(const VorControl::ControlProtocol::ControlProtocolEnviron& environ, std::function<void()> onStart)
        : ProtocolBase(environ)
        , onStart(std::move(onStart)) {
        VorControl::ControlProtocol::ProtocolInitParams init;
        init.params = &params;
        Init(init);
    }

    void Start() override {
        if (onStart) {
            onStart();
        }
        UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Running);
    }
    void Stop() override { UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Stopped); }

private:
    Vor::Params::Group params;
    std::function<void()> onStart;
};

class Factory : public VorControl::IControlFactory {
public:
    using Function = std::function<std::shared_ptr<VorControl::ControlProtocol::IProtocol>(
        const VorControl::ControlProtocol::ControlProtocolEnviron&)>;

    explicit Factory(Function function)
        : function(std::move(function)) {}

    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return function(environ);
    }

private:
    Function function;
};

[[maybe_unused]] static void AddType(VorControl::ControlPlugin& plugin, const std::string& typeName,
                                     Factory::Function function) {
    VorControl::ControlInfo info;
    info.SetTypeName(typeName.c_str()).SetDisplayName(("Fixture " + typeName).c_str());
    plugin.Add(info, std::make_shared<Factory>(std::move(function)));
}

/// Adds a type whose service calls the function at its start.
[[maybe_unused]] static void AddService(VorControl::ControlPlugin& plugin, const std::string& typeName,
                                        std::function<void()> onStart) {
    AddType(plugin, typeName, [onStart](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
        return std::make_shared<Service>(environ, onStart);
    });
}

} // namespace Fixture
