#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

namespace VorControl::ControlProtocol {

/// The document of a compact request. 65535 means the start of the assembly.
class CompactBlocksParams : public Vor::Params::Group {
public:
    CompactBlocksParams();

    Vor::Params::Value<unsigned short> startingOutputId;
};

} // namespace VorControl::ControlProtocol
