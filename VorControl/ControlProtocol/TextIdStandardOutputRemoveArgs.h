#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>
#include <vector>

namespace VorControl::ControlProtocol {

/// The request to remove entries: either one id or a list of them.
class TextIdStandardOutputRemoveArgs : public Vor::Params::Group {
public:
    TextIdStandardOutputRemoveArgs();

    Vor::Params::Value<std::string> outputId;
    Vor::Params::Value<std::vector<std::string>> outputIdList;
};

} // namespace VorControl::ControlProtocol
