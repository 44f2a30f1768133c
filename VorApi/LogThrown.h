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

/// Runs work that lets no exception out: it is logged below the text. False after an exception.
template <typename Work>
bool RunLogged(const LocatedFormat& text, Work&& work) {
    try {
        work();
        return true;
    } catch (const std::exception& exception) {
        LogThrown(exception, text);
    } catch (...) {
        LogError(text);
        LogError("unknown exception");
    }
    return false;
}

/// Runs the work of a destructor, which must not throw: exceptions are logged.
template <typename Work>
void CleanUp(Work&& work, const std::source_location& where = std::source_location::current()) noexcept {
    RunLogged(LocatedFormat("Exception thrown in destructor", where), work);
}

} // namespace Vor
