#include "VorControl/ControlProtocol/UpdateBlockNewParams.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

UpdateBlockNewParams::UpdateBlockNewParams()
    : Group("")
    , outputId(65535)
    , registerCount(65535) {
    Register("dataSource", dataSource, Translate("beApp.ctrl", "Data Source"), 100);
    Register("displayName", displayName, Translate("beApp.ctrl", "Display Name"), 100);
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
    Register("registerCount", registerCount, Translate("beApp.ctrl", "Register Count"), 100);
}

void UpdateBlockNewParams::Reset() {
    dataSource = std::string();
    displayName = std::string();
    outputId = 65535;
    registerCount = 65535;
}

} // namespace VorControl::ControlProtocol
