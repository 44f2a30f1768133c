#pragma once

#include "Services/Common/TcpServerProperties.h"

namespace Services::Modbus {

/// The properties of the service.
class ModbusProperties : public Common::TcpServerProperties {
public:
    ModbusProperties();

    /// Requests that were answered with an exception, since the service was started.
    Vor::Params::Value<unsigned long long> exceptions;
};

} // namespace Services::Modbus
