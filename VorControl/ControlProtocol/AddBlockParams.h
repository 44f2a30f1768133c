#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/RegisterBlockParams.h"

namespace VorControl::ControlProtocol {

/// The document of an add request.
class AddBlockParams : public Vor::Params::Group {
public:
    AddBlockParams();

    Vor::Params::Array<RegisterBlockParams> blocks;
    Vor::Params::Value<bool> autoShift; ///< blocks in the way are moved up, instead of refusing the new one
};

} // namespace VorControl::ControlProtocol
