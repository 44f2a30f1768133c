#include "VorControl/ControlProtocol/StandardOutputsArgs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputsArgs::StandardOutputsArgs() {
    Register("autoShift", autoShift, Translate("beApp.ctrl", "AutoShift"), 100);
}

} // namespace VorControl::ControlProtocol
