#pragma once

#include "VorControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "VorControl/ControlProtocol/StandardOutputs.h"

namespace VorControl::ControlProtocol {

// Compiled once, in StandardProtocolOutputMap.cpp.
extern template class ProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                         StandardOutputItemArgs, StandardOutputRemoveArgs>;
extern template class NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                                  StandardOutputItemArgs, StandardOutputRemoveArgs>;

/// The output map of services whose clients request outputs by number.
class StandardProtocolOutputMap
    : public NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                         StandardOutputItemArgs, StandardOutputRemoveArgs> {
public:
    /// The range, from outputIdMin to outputIdMax inclusive, is for clients only: the map numbers from 0 and accepts
    /// ids outside of the range. Throws yERROR_PARAMETER when the range is empty or outputIdMax is 65535.
    StandardProtocolOutputMap(unsigned short maxCount, unsigned short outputIdMin, unsigned short outputIdMax);
    ~StandardProtocolOutputMap() override;
};

} // namespace VorControl::ControlProtocol
