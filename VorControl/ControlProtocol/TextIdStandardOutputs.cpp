#include "VorControl/ControlProtocol/TextIdStandardOutputs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

TextIdStandardOutputItem::TextIdStandardOutputItem()
    : Group("") {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("source", source, Translate("beApp.ctrl", "Source"), 100);
    Register("itemType", itemType, Translate("beApp.ctrl", "Item type"), 100);
    itemType.EnableReadOnly();
    itemType.SetReadOnly(true);
}

TextIdStandardOutputs::TextIdStandardOutputs() {
    Register("map", map, Translate("beApp.ctrl", "OutputMap"), 100);
}

TextIdStandardOutputItemArgs::TextIdStandardOutputItemArgs() {
    Register("autoShift", autoShift, Translate("beApp.ctrl", "AutoShift"), 100);
}

TextIdStandardOutputRemoveArgs::TextIdStandardOutputRemoveArgs()
    : Group("") {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("outputIdList", outputIdList, Translate("beApp.ctrl", "Id List"), 100);
}

} // namespace VorControl::ControlProtocol
