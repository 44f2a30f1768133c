#pragma once

#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"

namespace VorControl::ControlProtocol {

/// How an assembly places its blocks. Read-only for clients; the assembly sets it.
class RegisterAssemblyAttributes : public Vor::Params::Group {
public:
    RegisterAssemblyAttributes();

    Vor::Params::Value<bool> isGlobalAddressSpaceUsed;
    Vor::Params::Value<unsigned short> outputIdMin;
    Vor::Params::Value<unsigned short> outputIdMax;
    Vor::Params::Value<bool> outputIdReadOnly; ///< true: a block leaves no choice of output id
};

} // namespace VorControl::ControlProtocol
