#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorControl::ControlProtocol {

/// An entry of a map with numbers as ids.
class StandardOutputItem : public Vor::Params::Group {
public:
    using Id = unsigned short;
    static constexpr Id NullId = 65535;

    StandardOutputItem();

    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<std::string> source;
};

} // namespace VorControl::ControlProtocol
