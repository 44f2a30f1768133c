#include "VorControl/Protocol/ControlProperties.h"

#include "VorControl/Protocol/DocumentMembers.h"

namespace VorControl::Protocol {

ControlProperties::ControlProperties() {
    Register("enabled", enabled, Title("Enabled"));
    RegisterReadOnly(*this, "id", id, "Internal Service Id");
    RegisterReadOnly(*this, "typeName", typeName, "Service Type");
    RegisterReadOnly(*this, "displayName", displayName, "Display Name");
}

ControlPropertiesUpdate::ControlPropertiesUpdate() {
    Register("enabled", enabled, Title("Enabled"));
}

} // namespace VorControl::Protocol
