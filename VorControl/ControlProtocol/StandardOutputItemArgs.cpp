#include "VorControl/ControlProtocol/StandardOutputItemArgs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputItemArgs::StandardOutputItemArgs() {
    Register("autoShift", autoShift, Translate("beApp.ctrl", "AutoShift"), 100);
}

} // namespace VorControl::ControlProtocol
