#pragma once

#include "VorApi/Params/Array.h"
#include "VorApi/Params/Group.h"
#include "VorControl/ControlProtocol/RegisterBlockIdParams.h"

namespace VorControl::ControlProtocol {

/// The document of a remove request.
class RemoveBlockParams : public Vor::Params::Group {
public:
    RemoveBlockParams();

    Vor::Params::Array<RegisterBlockIdParams> outputIdList;
};

} // namespace VorControl::ControlProtocol
