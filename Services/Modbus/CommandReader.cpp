#include "Services/Modbus/CommandReader.h"

#include "VorControl/ControlProtocol/RegisterBlockParams.h"

namespace Services::Modbus {

using namespace VorControl::ControlProtocol;

// The wire has each register high byte first, as a big endian block takes it.
CommandReader::CommandReader()
    : type(MakeControlInputType())
    , block(type->ConstructBlock(RegisterBlockParams())) {
    type->SetIsProtocolBigEndian(true);
}

ControlRegisterCommandData CommandReader::Read(const CommandInput& input) {
    ControlRegisterCommandData command;
    block->Deserialize(&command, sizeof command, input.data(), input.size());
    return command;
}

} // namespace Services::Modbus
