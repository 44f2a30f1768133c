#include "VorControl/ControlProtocol/CommonProtocolOutputProp.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

CommonProtocolOutputProp::CommonProtocolOutputProp()
    : Group("")
    , version("1.2") {
    Register("version", version, Translate("beApp.ctrl", "Version"), 100);
    version.EnableReadOnly();
    version.SetReadOnly(true);
    Register("acceptedDataFormats", acceptedDataFormats, Translate("beApp.ctrl", "Accepted Data Formats"), 100);
    acceptedDataFormats.Emplace().type = VorPipe::PipeDataType::Measurement;
}

} // namespace VorControl::ControlProtocol
