#pragma once

#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/StandardOutputs.h"

namespace VorControl::ControlProtocol {

/// The request to add many entries, or to give one another id.
class StandardOutputsArgs : public StandardOutputs {
public:
    StandardOutputsArgs();

    Vor::Params::Value<bool> autoShift; ///< entries in the way of a changed id move up, instead of refusing it
};

} // namespace VorControl::ControlProtocol
