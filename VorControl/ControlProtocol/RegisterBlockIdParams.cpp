#include "VorControl/ControlProtocol/RegisterBlockIdParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

RegisterBlockIdParams::RegisterBlockIdParams()
    : Group("")
    , outputId(65535) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
}

} // namespace VorControl::ControlProtocol
