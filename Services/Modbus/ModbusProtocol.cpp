#include "Services/Modbus/ModbusProtocol.h"

#include "Services/Common/Translate.h"
#include "Services/Modbus/Session.h"
#include "Services/Modbus/StateRecords.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"
#include "yApi/yArrayList.h"

namespace Services::Modbus {

using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned short FirstRegister = 0;
constexpr unsigned short LastRegister = 65534;

constexpr unsigned char CommandDone = 2; ///< statuses of a command
constexpr unsigned char CommandFailed = 3;

std::shared_ptr<ProtocolRegisterAssemblyBase> MakeAssembly() {
    auto assembly = std::make_shared<ProtocolRegisterAssemblyBase>(
        true, FirstRegister, LastRegister, "registerAssembly-0",
        IProtocolRegisterAssembly::DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME);
    AddScanBlockTypes(*assembly);
    AddControlBlockTypes(*assembly);
    return assembly;
}

/// Big endian: the client's registers arrive high byte first.
BlockType MakeCommandType() {
    BlockType type = MakeControlInputType();
    type->SetIsProtocolBigEndian(true);
    return type;
}

} // namespace

ModbusProtocol::ModbusProtocol(const ControlProtocolEnviron& environ)
    : TcpService(environ)
    , properties("exceptions", Common::Translate("Exceptions"))
    , assembly(MakeAssembly())
    , control(image, *this)
    , registers(assembly, image, control)
    , commandType(MakeCommandType())
    , commandBlock(commandType->ConstructBlock(RegisterBlockParams()))
    , handler(control, Counters(), 0)
    , commands({.host = GetControlHost(),
                .process = [this](const auto& command) { ProcessReceivedCommonCommands(command); },
                .beginOfOperation = [this] { return BeginOfLastOperation(); },
                .sources = [this] { return DataSourceList(); }}) {
    Init({.assemblies = {assembly}},
         {.threadName = "ModbusNet", .params = params, .properties = properties, .poll = [this] { ReadStates(); }});
}

ModbusProtocol::~ModbusProtocol() {
    CloseServer();
    Vor::CleanUp([this] { StopOperationEndEvents(); });
}

std::unique_ptr<Net::ITcpSession> ModbusProtocol::MakeSession(bool mayWrite) {
    return std::make_unique<Session>(handler, mayWrite);
}

void ModbusProtocol::UpdateSessions() {
    handler.SetUnit(params->Unit());
}

void ModbusProtocol::ParamsApplied() {
    assembly->ChangeBigEndianSupportedBlocks(params->IsBigEndian());
    control.SetFirstRequestRuns(params->firstRequest.Get() == ModbusParams::FirstRequestRuns);
    commands.SetTriggerTimeout(params->triggerTimeout.Time());
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

// A command that can't be read, such as the load of a job without a name, has failed.
void ModbusProtocol::Run(const CommandInput& input) {
    ControlRegisterCommandData command;
    try {
        commandBlock->Deserialize(&command, sizeof command, input.data(), input.size());
    } catch (const Vor::Exception&) {
        control.EndCommand(CommandFailed);
        return;
    }
    const bool isStarted = commands.Run(
        command, [this](yStatus status) { control.EndCommand(status == yOK ? CommandDone : CommandFailed); });
    if (!isStarted) {
        control.EndCommand(CommandFailed);
    }
}

// A state that can't be read leaves the last one in the registers.
void ModbusProtocol::ReadStates() {
    if (!control.HasStates()) {
        return;
    }
    const Common::SensorState state = commands.LastState();
    if (state.system) {
        control.SetSystemState(SystemState(*state.system));
    }
    if (state.scanner && !state.scanner->id.empty()) {
        control.SetScannerState(ScannerState(*state.scanner));
    }
    const Common::ServiceCounters& counters = Counters();
    control.SetDiagnostics({.clients = static_cast<std::uint32_t>(counters.connected),
                            .refused = static_cast<std::uint32_t>(counters.refused),
                            .requests = static_cast<std::uint32_t>(counters.requests),
                            .exceptions = static_cast<std::uint32_t>(counters.failed),
                            .dropCount = static_cast<std::uint32_t>(registers.Dropped()),
                            .uptime = static_cast<std::uint32_t>(counters.Uptime())});
}

void ModbusProtocol::ProcessResultSets(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    const std::size_t count = yArrayList_Count(sets);
    for (std::size_t i = 0; i < count; ++i) {
        registers.Process(yArrayList_At(sets, i));
    }
    commands.ResultsHeld(resultSets);
}

} // namespace Services::Modbus
