#pragma once

#include "Vor/LocatedFormat.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/Translate.h"

#include <cstdint>

namespace VorControl::Persistence {

/// An entry of the user's log in the user's language.
template <typename... Args>
void LogForUser(std::uint64_t level, const Vor::LocatedFormat& text, const Args&... args) {
    Vor::LogUser(level, "VorControl",
                 Vor::LocatedFormat(ControlProtocol::Translate("beApp.ctrl", text.text), text.where), args...);
}

} // namespace VorControl::Persistence
