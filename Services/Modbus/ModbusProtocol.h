#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "Services/Modbus/CommandReader.h"
#include "Services/Modbus/ControlRegisters.h"
#include "Services/Modbus/ModbusParams.h"
#include "Services/Modbus/ModbusProperties.h"
#include "Services/Modbus/ModbusServer.h"
#include "Services/Modbus/RegisterImage.h"
#include "Services/Modbus/ScanRegisters.h"
#include "Services/Modbus/ServerCounters.h"
#include "Vor/AsyncRunner.h"
#include "VorControl/ControlProtocol/ProtocolBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

namespace Services::Modbus {

// The Modbus TCP service: one register assembly, "registerAssembly-0", whose registers clients read, and through which
// they give commands.
class ModbusProtocol : public VorControl::ControlProtocol::ProtocolBase, private ICommandRunner {
public:
    explicit ModbusProtocol(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);
    ~ModbusProtocol() override;

    void Start() override;
    void Stop() override;

    void ParamsReset() override;
    // Takes the changed parameters while the service runs. If it can't listen at a new address or port, it goes on
    // where it was, says why in the property `failure`, and throws.
    void ParamsUpdate() override;

    void ConfigureDefaultRegisterAssembly() override;
    void RegisterAssemblyUpdate(const char* assemblyId) override;
    void ProcessResultSets(void* resultSets) override;

    // Brings the counters up to date.
    void NonPersistentPropertiesBeginLock() override;

protected:
    void OperationEndEventImpl(int status) override;

private:
    bool IsBusy() const override { return OperationInProgress(); }
    void Run(const CommandInput& input) override;
    // On the network thread.
    void Poll();

    void Open();
    void Close();
    void Show(const std::string& address, const std::string& failure);
    void ShowMap();

    ModbusProperties properties;
    ModbusParams params;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly;
    VorControl::ControlProtocol::ProtocolRegisterAssemblyGroup assemblies;
    RegisterImage image;
    ControlRegisters control;
    ScanRegisters registers;
    CommandReader commandReader;
    ServerCounters counters;
    std::unique_ptr<ModbusServer> server;
    // The map went back to its defaults while clients look at it. That is mostly the begin of a job's load, so they go
    // on with the former one until the job's map is there or, when it brings none, the main loop runs again.
    std::atomic<bool> mapChanging{false};
    Vor::AsyncRunner mainLoop;
};

} // namespace Services::Modbus
