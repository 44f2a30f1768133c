#include "VorControl/ControlProtocol/RegisterAssemblyRequests.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

AddBlockParams::AddBlockParams()
    : Group("") {
    Register("blocks", blocks, Translate("beApp.ctrl", "Register Block Parameters List"), 100);
    Register("autoShift", autoShift, Translate("beApp.ctrl", "Auto Shift Blocks On Output id Overlap"), 100);
}

RegisterBlockIdParams::RegisterBlockIdParams()
    : Group("")
    , outputId(NoneGiven) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
}

RemoveBlockParams::RemoveBlockParams()
    : Group("") {
    Register("outputIdList", outputIdList, Translate("beApp.ctrl", "Output Id List"), 100);
}

CompactBlocksParams::CompactBlocksParams()
    : Group("")
    , startingOutputId(NoneGiven) {
    Register("startingOutputId", startingOutputId, Translate("beApp.ctrl", "Starting Output Id"), 100);
}

UpdateBlockNewParams::UpdateBlockNewParams()
    : Group("")
    , outputId(NoneGiven)
    , registerCount(NoneGiven) {
    Register("dataSource", dataSource, Translate("beApp.ctrl", "Data Source"), 100);
    Register("displayName", displayName, Translate("beApp.ctrl", "Display Name"), 100);
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
    Register("registerCount", registerCount, Translate("beApp.ctrl", "Register Count"), 100);
}

void UpdateBlockNewParams::Reset() {
    dataSource = std::string();
    displayName = std::string();
    outputId = NoneGiven;
    registerCount = NoneGiven;
}

UpdateBlockParams::UpdateBlockParams()
    : Group("")
    , outputId(NoneGiven) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Output Id"), 100);
    Register("autoShift", autoShift, Translate("beApp.ctrl", "Auto Shift Blocks On Output id Overlap"), 100);
    Register("newParams", newParams, Translate("beApp.ctrl", "New Parameters For Output Id"), 100);
    newParams.Reset();
}

} // namespace VorControl::ControlProtocol
