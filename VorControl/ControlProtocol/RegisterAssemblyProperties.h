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

/// How an assembly places its blocks. Read-only for clients; the assembly sets it.
class RegisterAssemblyAttributes : public Vor::Params::Group {
public:
    RegisterAssemblyAttributes();

    Vor::Params::Value<bool> isGlobalAddressSpaceUsed;
    Vor::Params::Value<unsigned short> outputIdMin;
    Vor::Params::Value<unsigned short> outputIdMax;
    Vor::Params::Value<bool> outputIdReadOnly; ///< true: only one output id is possible
};

} // namespace VorControl::ControlProtocol
