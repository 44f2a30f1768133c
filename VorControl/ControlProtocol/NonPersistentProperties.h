#pragma once

#include "VorApi/Params/Enum.h"
#include "VorApi/Params/Group.h"
#include "VorControl/ControlProtocol/ProtocolStatus.h"

namespace VorControl::ControlProtocol {

/// The properties of a service that are never saved: its status. A service with more of them derives its own class with
/// further values and passes it to ProtocolBase::Init.
class NonPersistentProperties : public Vor::Params::Group {
public:
    NonPersistentProperties();

    Vor::Params::Enum<ProtocolStatus>& Status() { return status; }
    const Vor::Params::Enum<ProtocolStatus>& Status() const { return status; }

private:
    Vor::Params::Enum<ProtocolStatus> status;
};

} // namespace VorControl::ControlProtocol
