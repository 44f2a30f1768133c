#pragma once

namespace VorControl::ControlProtocol {

/// The output id or register count that means "none given". It is never a valid one.
inline constexpr unsigned short NoneGiven = 65535;

} // namespace VorControl::ControlProtocol
