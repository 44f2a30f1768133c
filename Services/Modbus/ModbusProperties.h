#pragma once

#include "Services/Common/TcpServerProperties.h"

namespace Services::Modbus {

/// What the service shows of itself.
class ModbusProperties : public Common::TcpServerProperties {
public:
    ModbusProperties();

    /// Requests that were answered with an exception, since the service was started.
    Vor::Params::Value<unsigned long long> exceptions;
};

} // namespace Services::Modbus
