#include "VorControl/ControlProtocol/StandardProtocolOutputMap.h"

namespace VorControl::ControlProtocol {

template class ProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs, StandardOutputItemArgs,
                                  StandardOutputRemoveArgs>;
template class NumericIdProtocolOutputBase<StandardOutputs, StandardOutputItem, StandardOutputsArgs,
                                           StandardOutputItemArgs, StandardOutputRemoveArgs>;

StandardProtocolOutputMap::StandardProtocolOutputMap(unsigned short maxCount, unsigned short outputIdMin,
                                                     unsigned short outputIdMax)
    : NumericIdProtocolOutputBase(maxCount) {
    if (outputIdMin > outputIdMax || outputIdMax == NoneGiven) {
        Vor::Throw(
            yERROR_PARAMETER,
            Translate("beApp.ctrl", "Minimum output id value %1$u and/or maximum output id value %2$u are invalid."),
            outputIdMin, outputIdMax);
    }
    outputs.attributes.outputIdMin = outputIdMin;
    outputs.attributes.outputIdMax = outputIdMax;
}

StandardProtocolOutputMap::~StandardProtocolOutputMap() = default;

} // namespace VorControl::ControlProtocol
