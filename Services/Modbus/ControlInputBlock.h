#pragma once

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlInputRegisterBlock.h"

namespace Services::Modbus {

/// A client's command in 65 registers of 16 bits: request word, command, and 63 registers of arguments. A job name is
/// in the low bytes of the arguments and becomes a complete file name; user data are all 126 bytes of them, high byte
/// first in both byte orders.
class ControlInputBlock : public VorControl::ControlProtocol::DefaultControlInputRegisterBlock {
public:
    static constexpr unsigned short Registers = 65;
    static constexpr unsigned short InputSize = 2 * Registers;

    using DefaultControlInputRegisterBlock::DefaultControlInputRegisterBlock;

    /// The destination is a ControlRegisterCommandData. In the source, the bytes of each register are high, low when
    /// the type is big endian, else low, high.
    void Deserialize(void* destination, unsigned long long destinationSize, const void* source,
                     unsigned long long sourceSize) override;
};

} // namespace Services::Modbus
