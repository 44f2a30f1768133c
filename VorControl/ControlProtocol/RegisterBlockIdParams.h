#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

namespace VorControl::ControlProtocol {

/// One block of a remove request. 65535 means "none given".
class RegisterBlockIdParams : public Vor::Params::Group {
public:
    RegisterBlockIdParams();

    Vor::Params::Value<unsigned short> outputId;
};

} // namespace VorControl::ControlProtocol
