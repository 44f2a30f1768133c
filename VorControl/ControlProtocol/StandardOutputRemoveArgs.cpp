#include "VorControl/ControlProtocol/StandardOutputRemoveArgs.h"

#include "VorControl/ControlProtocol/StandardOutputItem.h"
#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputRemoveArgs::StandardOutputRemoveArgs()
    : Group("")
    , outputId(StandardOutputItem::NullId) {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("outputIdList", outputIdList, Translate("beApp.ctrl", "Id List"), 100);
}

} // namespace VorControl::ControlProtocol
