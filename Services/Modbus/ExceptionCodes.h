#pragma once

namespace Services::Modbus {

/// Exception codes, see MODBUS Application Protocol V1.1b3, 7.
inline constexpr unsigned char NoException = 0;
inline constexpr unsigned char IllegalFunction = 1;
inline constexpr unsigned char IllegalDataAddress = 2;
inline constexpr unsigned char IllegalDataValue = 3;
inline constexpr unsigned char ServerDeviceBusy = 6;
inline constexpr unsigned char GatewayTargetFailedToRespond = 11;

} // namespace Services::Modbus
