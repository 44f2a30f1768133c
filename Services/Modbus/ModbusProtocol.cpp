#include "Services/Modbus/ModbusProtocol.h"

#include "Services/Common/Registers/StateRecords.h"
#include "Services/Common/Translate.h"
#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/DiagnosticsBlock.h"
#include "Services/Modbus/ModbusAssembly.h"
#include "Services/Modbus/Session.h"

namespace Services::Modbus {

using Common::CommandCells;
using namespace VorControl::ControlProtocol;

ModbusProtocol::ModbusProtocol(const ControlProtocolEnviron& environ)
    : TcpService(environ)
    , properties("exceptions", Common::Translate("Exceptions"))
    , assembly(std::make_shared<ModbusAssembly>())
    , cells(image, *this, MakeCellTypes(), MakeRegisterFormat())
    , registers(assembly, image, cells, MakeRegisterFormat())
    , map(image, cells)
    , handler(map, Counters(), 0)
    , commands({.host = GetControlHost(),
                .process = [this](const auto& command) { ProcessReceivedCommonCommands(command); },
                .beginOfTrigger = [this] { return BeginOfLastTrigger(); },
                .sources = [this] { return DataSourceList(); }}) {
    Init({.assemblies = {assembly}},
         {.threadName = "ModbusNet", .params = params, .properties = properties, .poll = [this] { ReadStates(); }});
}

ModbusProtocol::~ModbusProtocol() {
    CloseServer();
    StopOperationEndEvents();
}

std::unique_ptr<Net::ITcpSession> ModbusProtocol::MakeSession(bool mayWrite) {
    return std::make_unique<Session>(handler, mayWrite);
}

void ModbusProtocol::UpdateSessions() {
    handler.SetUnit(params->Unit());
}

void ModbusProtocol::ParamsApplied() {
    assembly->ChangeBigEndianSupportedBlocks(params->IsBigEndian());
    cells.SetFirstRequestRuns(params->firstRequest.Get() == ModbusParams::FirstRequestRuns);
    commands.SetTriggerTimeout(params->triggerTimeout.Time());
    if (IsRunning()) {
        registers.Rebuild(); // perhaps in another byte order
    }
}

void ModbusProtocol::MapChanged() {
    registers.Rebuild();
    commands.Interrupt();
}

void ModbusProtocol::Stopped() {
    registers.ForgetValues();
    commands.Interrupt();
}

void ModbusProtocol::ScanStateChangeImpl(bool started) {
    if (!started) {
        commands.Interrupt();
    }
}

void ModbusProtocol::Run(const ControlRegisterCommandData& command) {
    const auto end = [this](bool isDone) {
        cells.EndCommand(isDone ? CommandCells::CommandDone : CommandCells::CommandFailed);
    };
    if (!commands.Run(command, [end](yStatus status) { end(status == yOK); })) {
        end(false);
    }
}

// A state that can't be read leaves the last one in the registers.
void ModbusProtocol::ReadStates() {
    Common::SensorState state;
    if (cells.HasSystemState()) {
        commands.ReadSystem(state);
    }
    if (cells.HasState(ScannerType)) {
        commands.ReadScanner(state);
    }
    if (state.system) {
        cells.SetSystemState(Common::SystemState(*state.system));
    }
    if (state.scanner && !state.scanner->id.empty()) {
        cells.SetState(ScannerType, Common::ScannerState(*state.scanner));
    }
    const Common::ServiceCounters& counters = Counters();
    cells.SetState(DiagnosticsType, Diagnostics{.clients = static_cast<std::uint32_t>(counters.connected),
                                                .refused = static_cast<std::uint32_t>(counters.refused),
                                                .requests = static_cast<std::uint32_t>(counters.requests),
                                                .exceptions = static_cast<std::uint32_t>(counters.failed),
                                                .dropCount = static_cast<std::uint32_t>(counters.Dropped()),
                                                .uptime = static_cast<std::uint32_t>(counters.Uptime())});
}

} // namespace Services::Modbus
