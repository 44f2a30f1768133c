#include "VorControl/ControlProtocol/TextIdStandardOutputItemArgs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

TextIdStandardOutputItemArgs::TextIdStandardOutputItemArgs() {
    Register("autoShift", autoShift, Translate("beApp.ctrl", "AutoShift"), 100);
}

} // namespace VorControl::ControlProtocol
