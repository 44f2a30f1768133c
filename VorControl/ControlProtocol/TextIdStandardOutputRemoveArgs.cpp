#include "VorControl/ControlProtocol/TextIdStandardOutputRemoveArgs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

TextIdStandardOutputRemoveArgs::TextIdStandardOutputRemoveArgs()
    : Group("") {
    Register("outputId", outputId, Translate("beApp.ctrl", "Id"), 100);
    Register("outputIdList", outputIdList, Translate("beApp.ctrl", "Id List"), 100);
}

} // namespace VorControl::ControlProtocol
