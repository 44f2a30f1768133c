#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

namespace VorControl::ControlProtocol {

/// The range of ids as clients see it; the map doesn't hold them to it.
class StandardOutputsAttributes : public Vor::Params::Group {
public:
    StandardOutputsAttributes();

    Vor::Params::Value<unsigned short> outputIdMin;
    Vor::Params::Value<unsigned short> outputIdMax;
};

} // namespace VorControl::ControlProtocol
