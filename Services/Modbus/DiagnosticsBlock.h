#pragma once

#include "VorControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <cstdint>

namespace Services::Modbus {

/// What the service has done since it was started. Each count goes on from 0 after its greatest value.
struct Diagnostics {
    std::uint32_t clients = 0;    ///< that are connected now
    std::uint32_t refused = 0;    ///< clients that were closed as soon as they connected
    std::uint32_t requests = 0;   ///< requests that were answered
    std::uint32_t exceptions = 0; ///< requests that were answered with an exception
    std::uint32_t dropCount = 0;  ///< frames that were lost on their way into the registers
    std::uint32_t uptime = 0;     ///< seconds
};

/// Diagnostics in 12 registers of 16 bits, two for each value.
class DiagnosticsBlock : public VorControl::ControlProtocol::ProtocolRegisterBlock {
public:
    static constexpr unsigned short Registers = 12;

    using ProtocolRegisterBlock::ProtocolRegisterBlock;

    /// The source is a Diagnostics.
    void Serialize(void* destination, unsigned long long destinationSize, const void* source,
                   unsigned long long sourceSize) override;
};

} // namespace Services::Modbus
