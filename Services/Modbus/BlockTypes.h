#pragma once

#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace Services::Modbus {

// Adds the block types that a client can read: "Measurement", "MeasurementValue", "MeasurementDecision", "Stamp" and
// "String", each in registers of 16 bits.
void AddScanBlockTypes(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

} // namespace Services::Modbus
