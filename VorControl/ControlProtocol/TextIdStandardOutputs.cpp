#include "VorControl/ControlProtocol/TextIdStandardOutputs.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

TextIdStandardOutputs::TextIdStandardOutputs() {
    Register("map", map, Translate("beApp.ctrl", "OutputMap"), 100);
}

} // namespace VorControl::ControlProtocol
