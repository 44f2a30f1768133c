#pragma once

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

namespace Services::Modbus {

/// The system's state in 40 registers of 16 bits, of which no two overlap: state value (4), first state byte, length of
/// the job's file name, the name with two characters a register, high byte first (32), second and third state byte.
class SystemBlock : public VorControl::ControlProtocol::ProtocolRegisterBlock {
public:
    static constexpr unsigned short Registers = 40;

    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    /// The source is a DefaultSystemStateData.
    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
};

} // namespace Services::Modbus
