#pragma once

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlOutputRegisterBlock.h"

namespace Services::Modbus {

/// The answer to a command in 3 registers of 16 bits: request word, command status, 0.
class ControlOutputBlock : public VorControl::ControlProtocol::DefaultControlOutputRegisterBlock {
public:
    static constexpr unsigned short Registers = 3;

    using DefaultControlOutputRegisterBlock::DefaultControlOutputRegisterBlock;

    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override {
        DefaultControlOutputRegisterBlock::Serialize(destination, destinationSize, source, sourceSize);
        SerializeValue(static_cast<unsigned char*>(destination), 4, static_cast<unsigned short>(0), false);
    }
};

} // namespace Services::Modbus
