#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorControl::ControlProtocol {

/// The new values of an update request. An empty text and 65535 mean "no change".
class UpdateBlockNewParams : public Vor::Params::Group {
public:
    UpdateBlockNewParams();

    /// Back to "no change" in all of them.
    void Reset();

    Vor::Params::Value<std::string> dataSource;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<unsigned short> registerCount;
};

} // namespace VorControl::ControlProtocol
