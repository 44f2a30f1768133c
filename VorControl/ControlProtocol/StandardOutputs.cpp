#include "VorControl/ControlProtocol/StandardOutputs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputs::StandardOutputs() {
    Register("attributes", attributes, Translate("beApp.ctrl", "Attributes"), 100);
    Register("map", map, Translate("beApp.ctrl", "OutputMap"), 100);
}

} // namespace VorControl::ControlProtocol
