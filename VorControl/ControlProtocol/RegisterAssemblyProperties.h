#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

#include <string>

namespace VorControl::ControlProtocol {

/// The identity of an assembly. Read-only for clients; the assembly sets it.
class RegisterAssemblyProperties : public Vor::Params::Group {
public:
    RegisterAssemblyProperties();

    Vor::Params::Value<std::string> version;
    Vor::Params::Value<std::string> displayName;
    Vor::Params::Value<std::string> id;
};

} // namespace VorControl::ControlProtocol
