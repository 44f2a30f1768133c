#pragma once

#include "Vor/VorGetText.h"

namespace VorControl::ControlProtocol {

/// A text of one of the catalogues in the user's language; valid for the life of the process.
inline const char* Translate(const char* catalogue, const char* text) {
    return VorGetText::GetInstance().DPGetText("BE", catalogue, text);
}

} // namespace VorControl::ControlProtocol
