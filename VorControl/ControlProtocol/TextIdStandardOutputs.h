#pragma once

#include "VorApi/Params/Array.h"
#include "VorControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "VorControl/ControlProtocol/TextIdStandardOutputItem.h"

namespace VorControl::ControlProtocol {

/// The document of a map with texts as ids.
class TextIdStandardOutputs : public CommonProtocolOutputProp {
public:
    TextIdStandardOutputs();

    Vor::Params::Array<TextIdStandardOutputItem> map;
};

} // namespace VorControl::ControlProtocol
