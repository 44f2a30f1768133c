#pragma once

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/ControlRegisters.h"
#include "Services/Modbus/ModbusParams.h"
#include "Services/Modbus/ModbusProperties.h"
#include "Services/Modbus/ModbusServer.h"
#include "Services/Modbus/RegisterImage.h"
#include "Services/Modbus/ScanRegisters.h"
#include "Services/Modbus/ServerCounters.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "VorControl/Providers/ControlPersistenceProvider.h"

#include <memory>
#include <string>

namespace Services::Modbus {

/// The Modbus TCP service. Clients read the registers of one register assembly, "registerAssembly-0", and send commands
/// through them. Assembly and parameters are saved in the job, each with a version.
class ModbusProtocol : public VorControl::ControlProtocol::ProtocolBase, private ICommandRunner {
public:
    explicit ModbusProtocol(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);
    ~ModbusProtocol() override;

    void Start() override;
    void Stop() override;

    using ProtocolBase::Params;
    std::shared_ptr<Vor::Params::Group> Params(VorCommon::PersistDomain domain) const override;
    using ProtocolBase::ParamsVersion;
    const char* ParamsVersion(VorCommon::PersistDomain domain) const override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssemblyGroup>
    RegisterAssemblyGroup(VorCommon::PersistDomain domain) override;
    const char* RegisterAssemblyVersion(VorCommon::PersistDomain domain, const char* assemblyId) override;
    std::shared_ptr<VorControl::Providers::IControlPersistenceProvider> PersistenceProvider() override;

    using ProtocolBase::ParamsReset;
    void ParamsReset() override;
    /// Applies the changed parameters while the service runs. If it can't listen at a new address or port, it continues
    /// at the former one, sets the property `failure` to the reason, and throws.
    void ParamsUpdate() override;

    void ConfigureDefaultRegisterAssembly() override;
    void RegisterAssemblyUpdate(const char* assemblyId) override;
    void ProcessResultSets(void* resultSets) override;

    /// Updates the counters.
    void NonPersistentPropertiesBeginLock() override;

protected:
    void OperationEndEventImpl(int status) override;

    void ParamsResetImpl(VorCommon::PersistDomain domain) override;
    std::shared_ptr<Vor::Params::Group> BeginUpdateParamsImpl(VorCommon::PersistDomain domain,
                                                              const char* version) override;
    /// Applies the parameters if ParamsUpdate hasn't. Parameters that can't be used stay, and the user log says so.
    void EndUpdateParamsImpl(VorCommon::PersistDomain domain, const char* version) override;
    void RegisterAssemblyGroupResetImpl(VorCommon::PersistDomain domain) override;
    std::shared_ptr<VorControl::ControlProtocol::IProtocolRegisterAssembly>
    BeginUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                    const char* version) override;
    void EndUpdateRegisterAssemblyImpl(VorCommon::PersistDomain domain, const char* assemblyId,
                                       const char* version) override;

private:
    bool IsBusy() const override { return OperationInProgress(); }
    void Run(const CommandInput& input) override;
    /// Copies the states of system and scanner into their registers. Called on the network thread.
    void ReadStates();

    void Open();
    void Close();
    void SetProperties(const std::string& address, const std::string& failure);

    ModbusProperties properties;
    const std::shared_ptr<ModbusParams> params = std::make_shared<ModbusParams>();
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup> assemblies =
        std::make_shared<VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup>();
    const std::shared_ptr<VorControl::Providers::ControlPersistenceProvider> provider =
        std::make_shared<VorControl::Providers::ControlPersistenceProvider>(*this);
    /// Whether ParamsUpdate was called in the present update. Guarded by the update gate.
    bool paramsUpdated = false;
    RegisterImage image;
    ControlRegisters control;
    ScanRegisters registers;
    /// A block that reads commands, outside of the assembly and its lock. For the network thread.
    const BlockType commandType;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> commandBlock;
    ServerCounters counters;
    std::unique_ptr<ModbusServer> server;
};

} // namespace Services::Modbus
