#pragma once

#include "VorControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include <cstdint>

namespace Services::Modbus {

/// The assembly of the service with all its types of blocks. A text has at most as many registers as one request reads.
class ModbusAssembly : public VorControl::ControlProtocol::ProtocolRegisterAssemblyBase {
public:
    static constexpr unsigned short MaxTextRegisters = 125;

    ModbusAssembly();

    /// Both throw yERROR_PARAMETER, and change nothing, for a text of 0 or of more than MaxTextRegisters registers.
    std::uint32_t Add(Vor::Params::Group& group) override;
    std::uint32_t Update(const Vor::Params::Group& group) override;
};

} // namespace Services::Modbus
