#pragma once

#include "Services/Common/Registers/CommandCells.h"
#include "Services/Common/Registers/ICommandRunner.h"
#include "Services/Common/Registers/RegisterImage.h"
#include "Services/Common/Registers/ScanRegisters.h"
#include "Services/Common/SensorCommands.h"
#include "Services/Common/TcpService.h"
#include "Services/Modbus/ModbusParams.h"
#include "Services/Modbus/RegisterMap.h"
#include "Services/Modbus/RequestHandler.h"
#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include <memory>

namespace Services::Modbus {

/// The Modbus TCP service. Clients read the registers of one register assembly, "registerAssembly-0", and send commands
/// through them. Assembly and parameters are saved in the job.
class ModbusProtocol : public Common::TcpService, private Common::ICommandRunner {
public:
    explicit ModbusProtocol(const VorControl::ControlProtocol::ControlProtocolEnviron& environ);
    ~ModbusProtocol() override;

    void OnLoadBegin() override { commands.Interrupt(); }

protected:
    std::unique_ptr<Net::ITcpSession> MakeSession(bool mayWrite) override;
    void UpdateSessions() override;
    void ParamsApplied() override;
    void MapChanged() override;
    void Stopped() override;
    bool ApplyResultSet(ResultSet set) override { return registers.Process(set); }
    void ResultSetsApplied(void* resultSets) override { commands.ResultsHeld(resultSets); }
    void OperationEndEventImpl(int status) override { commands.OperationEnded(status); }
    void ScanStateChangeImpl(bool started) override;

private:
    bool IsBusy() const override { return commands.IsBusy(); }
    void Run(const VorControl::ControlProtocol::ControlRegisterCommandData& command) override;
    /// Copies the states of system and scanner into their registers. Called on the network thread.
    void ReadStates();

    Common::TcpServerProperties properties;
    const std::shared_ptr<ModbusParams> params = std::make_shared<ModbusParams>();
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterAssemblyBase> assembly;
    Common::RegisterImage image;
    Common::CommandCells cells;
    Common::ScanRegisters registers;
    RegisterMap map;
    RequestHandler handler; ///< belongs to the network thread
    Common::SensorCommands commands;
};

} // namespace Services::Modbus
