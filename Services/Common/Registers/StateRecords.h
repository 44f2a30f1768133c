#pragma once

#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/IControlSystemInterface.h"
#include "VorControl/ControlProtocol/ControlRegisterTypes.h"

namespace Services::Common {

/// The state of the system for clients: the machine's up time in seconds, the run state (0 ready, 1 scanning) as the
/// first byte, the use of the processor in percent as the third, and the first 64 characters of the loaded job's file
/// name.
VorControl::ControlProtocol::DefaultSystemStateData
SystemState(const VorControl::IControlSystemInterface::SystemStats& stats);

/// The state of the scanner for clients: its encoder and its time in microseconds, its alignment (0 not aligned, 1
/// aligned, 2 aligning) as the first byte, and whether its laser is on as the second.
VorControl::ControlProtocol::DefaultScannerStateData
ScannerState(const VorControl::IControlScanEngineInterface::ScannerStateInfo& info);

} // namespace Services::Common
