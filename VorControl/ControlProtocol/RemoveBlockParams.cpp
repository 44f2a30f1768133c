#include "VorControl/ControlProtocol/RemoveBlockParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

RemoveBlockParams::RemoveBlockParams()
    : Group("") {
    Register("outputIdList", outputIdList, Translate("beApp.ctrl", "Output Id List"), 100);
}

} // namespace VorControl::ControlProtocol
