#include "VorControl/ControlProtocol/StandardOutputs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputItem::StandardOutputItem()
    : Group("")
    , outputId(NullId) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("source", source, Translate("beApp.ctrl", "Source"), 100);
}

StandardOutputsAttributes::StandardOutputsAttributes()
    : Group("") {
    Register("outputIdMin", outputIdMin, Translate("beApp.ctrl", "Minimum Output Id"), 100);
    outputIdMin.EnableReadOnly();
    outputIdMin.SetReadOnly(true);
    Register("outputIdMax", outputIdMax, Translate("beApp.ctrl", "Maximum Output Id"), 100);
    outputIdMax.EnableReadOnly();
    outputIdMax.SetReadOnly(true);
}

StandardOutputs::StandardOutputs() {
    Register("attributes", attributes, Translate("beApp.ctrl", "Attributes"), 100);
    Register("map", map, Translate("beApp.ctrl", "OutputMap"), 100);
}

StandardOutputItemArgs::StandardOutputItemArgs() {
    Register("autoShift", autoShift, Translate("beApp.ctrl", "AutoShift"), 100);
}

StandardOutputsArgs::StandardOutputsArgs() {
    Register("autoShift", autoShift, Translate("beApp.ctrl", "AutoShift"), 100);
}

StandardOutputRemoveArgs::StandardOutputRemoveArgs()
    : Group("")
    , outputId(StandardOutputItem::NullId) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("outputIdList", outputIdList, Translate("beApp.ctrl", "Id List"), 100);
}

} // namespace VorControl::ControlProtocol
