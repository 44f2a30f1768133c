#include "VorControl/ControlProtocol/RegisterBlockParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

RegisterBlockParams::RegisterBlockParams()
    : Group("")
    , outputId(NoneGiven)
    , registerCount(NoneGiven) {
    Register("type", type, Translate("beApp.ctrl", "Register Block Type"), 100);
    Register("dataSource", dataSource, Translate("beApp.ctrl", "Scan Output Data Source"), 100);
    Register("displayName", displayName, Translate("beApp.ctrl", "Display Name"), 100);
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
    Register("registerCount", registerCount, Translate("beApp.ctrl", "Register Count"), 100);
}

} // namespace VorControl::ControlProtocol
