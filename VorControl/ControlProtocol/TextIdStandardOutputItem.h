#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorControl::ControlProtocol {

/// An entry of a map with texts as ids.
class TextIdStandardOutputItem : public Vor::Params::Group {
public:
    using Id = std::string;
    inline static const Id NullId;

    TextIdStandardOutputItem();

    Vor::Params::Value<std::string> outputId;
    Vor::Params::Value<std::string> source;
    Vor::Params::Value<std::string>
        itemType; ///< for the service that owns the map; insertions and changes of an id don't carry it along
};

} // namespace VorControl::ControlProtocol
