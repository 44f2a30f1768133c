#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/UpdateBlockNewParams.h"

namespace VorControl::ControlProtocol {

/// The document of an update request.
class UpdateBlockParams : public Vor::Params::Group {
public:
    UpdateBlockParams();

    Vor::Params::Value<unsigned short> outputId; ///< of the block to change
    Vor::Params::Value<bool> autoShift;          ///< blocks in the way are moved up, instead of refusing the change
    UpdateBlockNewParams newParams;
};

} // namespace VorControl::ControlProtocol
