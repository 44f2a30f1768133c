#pragma once

#include "Services/Modbus/BlockTypes.h"
#include "Services/Modbus/ICommandRunner.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"
#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <memory>

namespace Services::Modbus {

/// Reads commands through a "ControlInput" block of its own. Not thread-safe.
class CommandReader {
public:
    CommandReader();

    /// Throws what ControlInputBlock::Deserialize throws: yERROR_PARAMETER for the load of a job without a name.
    VorControl::ControlProtocol::ControlRegisterCommandData Read(const CommandInput& input);

private:
    const BlockType type;
    const std::shared_ptr<VorControl::ControlProtocol::ProtocolRegisterBlock> block;
};

} // namespace Services::Modbus
