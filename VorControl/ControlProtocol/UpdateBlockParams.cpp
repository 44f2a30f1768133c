#include "VorControl/ControlProtocol/UpdateBlockParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

UpdateBlockParams::UpdateBlockParams()
    : Group("")
    , outputId(65535) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
    Register("autoShift", autoShift, Translate("beApp.ctrl", "Auto Shift Blocks On Output id Overlap"), 100);
    Register("newParams", newParams, Translate("beApp.ctrl", "New Parameters For Output Id"), 100);
    newParams.Reset();
}

} // namespace VorControl::ControlProtocol
