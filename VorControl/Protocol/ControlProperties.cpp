#include "VorControl/Protocol/ControlProperties.h"

#include "VorControl/Protocol/DocumentMembers.h"

namespace VorControl::Protocol {

ControlProperties::ControlProperties() {
    Register("enabled", enabled, Title("Enabled"));
    RegisterReadOnly(*this, "id", id, Title("Internal Service Id"));
    RegisterReadOnly(*this, "typeName", typeName, Title("Service Type"));
    RegisterReadOnly(*this, "displayName", displayName, Title("Display Name"));
}

ControlPropertiesUpdate::ControlPropertiesUpdate() {
    Register("enabled", enabled, Title("Enabled"));
}

} // namespace VorControl::Protocol
