#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlockInfo.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

#include <memory>
#include <string>
#include <vector>

namespace Fuzz {

class ClientSettings : public Vor::Params::Group {
public:
    ClientSettings() {
        Register("name", name);
        Register("ports", ports);
    }

    Vor::Params::Value<std::string> name;
    Vor::Params::Value<std::vector<unsigned short>> ports;
};

class ServiceSettings : public Vor::Params::Group {
public:
    ServiceSettings() {
        Register("port", port);
        Register("offset", offset);
        Register("fast", fast);
        Register("clients", clients);
        port.EnableMaximum(true);
        port.SetMaximum(60000);
    }

    Vor::Params::Value<unsigned short> port{502};
    Vor::Params::Value<long long> offset;
    Vor::Params::Value<bool> fast;
    Vor::Params::Array<ClientSettings> clients;
};

/// Has parameters and one register assembly, and uses no scan results.
class Service : public VorControl::ControlProtocol::ProtocolBase {
public:
    explicit Service(const VorControl::ControlProtocol::ControlProtocolEnviron& environ)
        : ProtocolBase(environ) {
        using namespace VorControl::ControlProtocol;
        assembly->AddSupportedBlockType(std::make_unique<DefaultMeasurementValueRegisterBlockInfo>());
        assembly->AddSupportedBlockType(std::make_unique<DefaultStampRegisterBlockInfo>());
        group.Add(assembly);
        ProtocolInitParams init;
        init.params = &settings;
        init.registerAssemblyGroup = &group;
        Init(init);
    }

    void Start() override { UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Running); }
    void Stop() override { UpdateProtocolStatus(VorControl::ControlProtocol::ProtocolStatus::Stopped); }
    void AddControlScanResultsHandler() override {}
    void RemoveControlScanResultsHandler() override {}
    void RegisterAssemblyUpdate(const char*) override {}
    void ConfigureDefaultRegisterAssembly() override { assembly->InitDefaultRegisterBlocksForRegisterAssembly(); }

private:
    ServiceSettings settings;
    std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly =
        std::make_shared<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase>(true, 100, 999,
                                                                                    "registerAssembly-0", "Map");
    VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup group;
};

} // namespace Fuzz
