#pragma once

#include "Vor/Exception.h"
#include "Vor/LocatedFormat.h"
#include "Vor/Logging.h"

#include <exception>

namespace VorControl {

/// An entry at error level, with the exception and its back trace behind it.
template <typename... Args>
void LogThrown(const std::exception& e, const Vor::LocatedFormat& text, const Args&... args) {
    Vor::LogError(text, args...);
    Vor::Exception::LogException(e);
    Vor::Exception::LogBackTrace(e);
}

} // namespace VorControl
