#pragma once

#include "VorApi/Params/Array.h"
#include "VorControl/ControlProtocol/CommonProtocolOutputProp.h"
#include "VorControl/ControlProtocol/StandardOutputItem.h"
#include "VorControl/ControlProtocol/StandardOutputsAttributes.h"

namespace VorControl::ControlProtocol {

/// The document of a map with numbers as ids.
class StandardOutputs : public CommonProtocolOutputProp {
public:
    StandardOutputs();

    StandardOutputsAttributes attributes;
    Vor::Params::Array<StandardOutputItem> map;
};

} // namespace VorControl::ControlProtocol
