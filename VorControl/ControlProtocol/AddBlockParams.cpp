#include "VorControl/ControlProtocol/AddBlockParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

AddBlockParams::AddBlockParams()
    : Group("") {
    Register("blocks", blocks, Translate("beApp.ctrl", "Register Block Parameters List"), 100);
    Register("autoShift", autoShift, Translate("beApp.ctrl", "Auto Shift Blocks On Output id Overlap"), 100);
}

} // namespace VorControl::ControlProtocol
