#pragma once

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"

namespace Services::Modbus {

/// A stamp whose registers are 0 for a missing value.
class StampRegisterBlock : public VorControl::ControlProtocol::DefaultStampRegisterBlock {
public:
    using DefaultStampRegisterBlock::DefaultStampRegisterBlock;

    void SerializeNullMsg(unsigned char* buffer, unsigned long offset) override {
        SerializeString(buffer, offset, "", 0, SerializedOutputSize());
    }
};

} // namespace Services::Modbus
