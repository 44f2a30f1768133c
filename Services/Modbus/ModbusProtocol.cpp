#include "Services/Modbus/ModbusProtocol.h"

#include "Services/Common/Translate.h"
#include "Services/Modbus/Session.h"
#include "Services/Modbus/StateRecords.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"
#include "yApi/yArrayList.h"

namespace Services::Modbus {

using VorControl::IControlHost;
using namespace VorControl::ControlProtocol;

namespace {

constexpr unsigned short FirstRegister = 0;
constexpr unsigned short LastRegister = 65534;

/// A state that can't be read leaves the last one in the registers.
template <class Work>
void IgnoreFailure(const Work& work) {
    try {
        work();
    } catch (const Vor::Exception&) {
        return;
    }
}

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
    , handler(control, Counters(), 0) {
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
}

void ModbusProtocol::MapChanged() {
    registers.Rebuild();
}

void ModbusProtocol::Stopped() {
    registers.ForgetValues();
}

// A command that can't be read, such as the load of a job without a name, has failed.
void ModbusProtocol::Run(const CommandInput& input) {
    ControlRegisterCommandData command;
    try {
        commandBlock->Deserialize(&command, sizeof command, input.data(), input.size());
    } catch (const Vor::Exception& e) {
        OperationCompleted(e.Status());
        return;
    }
    ProcessReceivedCommonCommands(command);
}

void ModbusProtocol::OperationEndEventImpl(int) {
    control.EndCommand(GetCommandStatus());
}

void ModbusProtocol::ReadStates() {
    if (!control.HasStates()) {
        return;
    }
    IControlHost& host = GetControlHost();
    IgnoreFailure([&] { control.SetSystemState(SystemState(host.SystemStats(0))); });
    IgnoreFailure([&] {
        const auto info = host.ScannerInfo("", 0);
        // Without an id there is no scanner.
        if (!info.id.empty()) {
            control.SetScannerState(ScannerState(info));
        }
    });
}

void ModbusProtocol::ProcessResultSets(void* resultSets) {
    const auto sets = static_cast<yArrayList>(resultSets);
    const std::size_t count = yArrayList_Count(sets);
    for (std::size_t i = 0; i < count; ++i) {
        registers.Process(yArrayList_At(sets, i));
    }
}

} // namespace Services::Modbus
