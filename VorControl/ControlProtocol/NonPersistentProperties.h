#pragma once

#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorControl/ControlProtocol/ProtocolStatus.h"

namespace VorControl::ControlProtocol {

/// What a service shows of itself and never saves: its status. A service that shows more derives its own class, adds
/// its values, and hands it to ProtocolBase::Init.
class NonPersistentProperties : public Vor::Params::Group {
public:
    NonPersistentProperties();

    Vor::Params::Enum<ProtocolStatus>& Status() { return status; }
    const Vor::Params::Enum<ProtocolStatus>& Status() const { return status; }

private:
    Vor::Params::Enum<ProtocolStatus> status;
};

} // namespace VorControl::ControlProtocol
