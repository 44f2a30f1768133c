#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorControl::ControlProtocol {

/// One block of an add request, and what each block is constructed from. An empty text and 65535 mean "none given".
class RegisterBlockParams : public Vor::Params::Group {
public:
    RegisterBlockParams();

    Vor::Params::Value<std::string> type;
    Vor::Params::Value<std::string> dataSource;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<unsigned short> outputId;
    Vor::Params::Value<unsigned short> registerCount;
};

} // namespace VorControl::ControlProtocol
