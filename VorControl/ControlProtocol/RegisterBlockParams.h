#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorControl/ControlProtocol/NoneGiven.h"

#include <string>

namespace VorControl::ControlProtocol {

/// One block of a request to add blocks, and what each block is constructed from. An empty text and NoneGiven mean
/// that no value is given.
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
