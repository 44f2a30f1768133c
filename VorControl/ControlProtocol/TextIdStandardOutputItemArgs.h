#pragma once

#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputItem.h"

namespace VorControl::ControlProtocol {

/// The request to add one entry.
class TextIdStandardOutputItemArgs : public TextIdStandardOutputItem {
public:
    TextIdStandardOutputItemArgs();

    Vor::Params::Value<bool> autoShift; ///< has no effect: these maps shift nothing
};

} // namespace VorControl::ControlProtocol
