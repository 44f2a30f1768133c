#pragma once

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::Protocol {

/// A text of the resources of output maps in the user's language.
inline const char* OutputsText(const char* text) {
    return ControlProtocol::Translate("beApp.ctrl", text);
}

} // namespace VorControl::Protocol
