#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <vector>

namespace VorControl::ControlProtocol {

/// The request to remove entries: either one id or a list of them.
class StandardOutputRemoveArgs : public Vor::Params::Group {
public:
    StandardOutputRemoveArgs();

    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<std::vector<unsigned short>> outputIdList;
};

} // namespace VorControl::ControlProtocol
