#pragma once

#include "Vor/Exception.h"
#include "Vor/LocatedFormat.h"
#include "Vor/Logging.h"

#include <exception>
#include <source_location>

namespace Vor {

/// Logs a text at error level, then the exception and its back trace.
template <typename... Args>
void LogThrown(const std::exception& exception, const LocatedFormat& text, const Args&... args) {
    LogError(text, args...);
    Exception::LogException(exception);
    Exception::LogBackTrace(exception);
}

/// Runs the work of a destructor, which must not throw: exceptions are logged.
template <typename Work>
void CleanUp(Work&& work, const std::source_location& where = std::source_location::current()) noexcept {
    const LocatedFormat text("Exception thrown in destructor", where);
    try {
        work();
    } catch (const std::exception& exception) {
        LogThrown(exception, text);
    } catch (...) {
        LogError(text);
    }
}

} // namespace Vor
