#pragma once

namespace Services::Modbus {

/// Exception codes, see MODBUS Application Protocol V1.1b3, 7.
enum ExceptionCode : unsigned char {
    NoException = 0,
    IllegalFunction = 1,
    IllegalDataAddress = 2,
    IllegalDataValue = 3,
    ServerDeviceBusy = 6,
    GatewayTargetFailedToRespond = 11
};

} // namespace Services::Modbus
