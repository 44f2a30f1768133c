#include "VorControl/Persistence/PersistInstanceProperties.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl {

PersistInstanceProperties::PersistInstanceProperties() {
    Register("enabled", enabled, ControlProtocol::Translate("beApp.ctrl", "Service Enabled"));
}

} // namespace VorControl
