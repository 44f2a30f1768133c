#pragma once

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl {

/// A text of the catalogue for messages about services, in the user's language; valid for the life of the process.
inline const char* ControlText(const char* text) {
    return ControlProtocol::Translate("beApp.ctrl", text);
}

} // namespace VorControl
