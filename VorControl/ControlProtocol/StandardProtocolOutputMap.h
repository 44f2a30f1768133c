#pragma once

#include "VorControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "VorControl/ControlProtocol/StandardOutputItemArgs.h"
#include "VorControl/ControlProtocol/StandardOutputRemoveArgs.h"
#include "VorControl/ControlProtocol/StandardOutputsArgs.h"

namespace VorControl::ControlProtocol {

/// The output map of services whose clients ask for outputs by number.
class StandardProtocolOutputMap
    : public NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                         StandardOutputItemArgs, StandardOutputRemoveArgs> {
public:
    /// The range tells clients which ids to use, both inclusive; the map numbers from 0 and holds no id to it. Throws
    /// yERROR_PARAMETER when the range is empty or its end is above 65534.
    StandardProtocolOutputMap(unsigned short maxCount, unsigned short outputIdMin, unsigned short outputIdMax);
};

} // namespace VorControl::ControlProtocol
