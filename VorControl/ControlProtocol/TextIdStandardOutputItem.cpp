#include "VorControl/ControlProtocol/TextIdStandardOutputItem.h"

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

} // namespace VorControl::ControlProtocol
