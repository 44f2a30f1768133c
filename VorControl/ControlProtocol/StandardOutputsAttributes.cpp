#include "VorControl/ControlProtocol/StandardOutputsAttributes.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

StandardOutputsAttributes::StandardOutputsAttributes()
    : Group("") {
    Register("outputIdMin", outputIdMin, Translate("beApp.ctrl", "Minimum Output Id"), 100);
    outputIdMin.EnableReadOnly();
    outputIdMin.SetReadOnly(true);
    Register("outputIdMax", outputIdMax, Translate("beApp.ctrl", "Maximum Output Id"), 100);
    outputIdMax.EnableReadOnly();
    outputIdMax.SetReadOnly(true);
}

} // namespace VorControl::ControlProtocol
