#pragma once

#include "Services/Common/Registers/RegisterCell.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

namespace Services::Modbus {

/// Adds the block types that scans feed: "Measurement", "MeasurementValue", "MeasurementDecision", "Stamp" and
/// "String", each in registers of 16 bits.
void AddScanBlockTypes(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

/// Adds "ControlInput", "ControlOutput", "System", "Scanner" and "Diagnostics" in registers of 16 bits, at most one
/// block of each.
void AddControlBlockTypes(VorControl::ControlProtocol::IProtocolRegisterAssembly& assembly);

using Common::BlockType;

inline constexpr const char* ScannerType = "Scanner";
inline constexpr const char* DiagnosticsType = "Diagnostics";

BlockType MakeControlInputType();
BlockType MakeControlOutputType();
BlockType MakeSystemType();
BlockType MakeScannerType();
/// Has the category of "System"; its type distinguishes them.
BlockType MakeDiagnosticsType();

} // namespace Services::Modbus
