#pragma once

#include "Vor/VorGetText.h"

namespace Services::Common {

/// A text in the user's language; valid for the life of the process.
inline const char* Translate(const char* text) {
    return VorGetText::GetInstance().DPGetText("BE", "com.vorlab.ctrl", text);
}

} // namespace Services::Common
