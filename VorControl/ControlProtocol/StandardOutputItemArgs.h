#pragma once

#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/StandardOutputItem.h"

namespace VorControl::ControlProtocol {

/// The request to add one entry.
class StandardOutputItemArgs : public StandardOutputItem {
public:
    StandardOutputItemArgs();

    Vor::Params::Value<bool> autoShift; ///< entries in the way move up, instead of refusing the new one
};

} // namespace VorControl::ControlProtocol
