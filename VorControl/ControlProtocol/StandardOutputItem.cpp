#include "VorControl/ControlProtocol/StandardOutputItem.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputItem::StandardOutputItem()
    : Group("")
    , outputId(NullId) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("source", source, Translate("beApp.ctrl", "Source"), 100);
}

} // namespace VorControl::ControlProtocol
