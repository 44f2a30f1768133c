#pragma once

#include "VorControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"

namespace Services::Modbus {

/// The scanner's state in 10 registers of 16 bits, of which no two overlap: signed value (4), unsigned value (4), first
/// and second scanner byte.
class ScannerBlock : public VorControl::ControlProtocol::DefaultScannerStateRegisterBlock {
public:
    static constexpr unsigned short Registers = 10;

    ScannerBlock(const VorControl::ControlProtocol::RegisterBlockParams& params,
                 VorControl::ControlProtocol::ProtocolRegisterBlockInfo& info)
        : DefaultScannerStateRegisterBlock(params, info, {.secondScannerByte = 18}) {}
};

} // namespace Services::Modbus
