#pragma once

#include "VorControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

namespace VorControl::ControlProtocol {

/// Stands in an assembly for images: it names its data source and has no registers of its own. A protocol that
/// sends the data derives from it.
class DefaultImageRegisterBlock : public ProtocolScanOutputRegisterBlock {
public:
    using ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock;
};

} // namespace VorControl::ControlProtocol
