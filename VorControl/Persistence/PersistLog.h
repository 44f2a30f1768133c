#pragma once

#include "Vor/Exception.h"
#include "Vor/LocatedFormat.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/Translate.h"
#include "yApi/yStatus.h"

#include <cstdint>
#include <exception>

namespace VorControl::Persistence {

/// An entry of the user's log in the user's language.
template <typename... Args>
void LogForUser(std::uint64_t level, const Vor::LocatedFormat& text, const Args&... args) {
    Vor::LogUser(level, "VorControl",
                 Vor::LocatedFormat(ControlProtocol::Translate("beApp.ctrl", text.text), text.where), args...);
}

/// The status of a Vor::Exception, the generic failure of any other.
inline yStatus StatusOf(const std::exception& exception) {
    const auto* failure = dynamic_cast<const Vor::Exception*>(&exception);
    return failure != nullptr ? failure->Status() : yERROR;
}

} // namespace VorControl::Persistence
