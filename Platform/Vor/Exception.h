#pragma once

#include "Vor/Format.h"
#include "Vor/LocatedFormat.h"
#include "yApi/yStatus.h"

#include <exception>
#include <memory>
#include <source_location>
#include <string>

namespace Vor {

/// A failure: a status, the place where it was found, and a text, which may be missing. The back trace is recorded when
/// it is made. A copy shares its content and never throws. Works with std::throw_with_nested.
class Exception : public std::exception {
public:
    Exception(int line, const char* path, yStatus status, const char* function);
    template <typename... Args>
    Exception(int line, const char* path, yStatus status, const char* function, const char* format, const Args&... args)
        : Exception(line, path, status, function, Text{Format(format, args...)}) {}

    yStatus Status() const;
    /// The status of a Vor::Exception, yERROR for another exception.
    static yStatus StatusOf(const std::exception& e);
    /// The formatted text, or "" when there is none.
    const char* what() const noexcept override;
    bool HasText() const;
    int Line() const;
    const char* Path() const;
    const char* Function() const;

    /// Logs the exception and those nested in it, outermost first, at error level. Neither function throws.
    static void LogException(const std::exception& e);
    /// Logs the back trace of each Vor::Exception of the chain, at error level.
    static void LogBackTrace(const std::exception& e);

private:
    struct Text {
        std::string value;
    };
    struct State;

    Exception(int line, const char* path, yStatus status, const char* function, Text text);

    std::shared_ptr<State> state;
};

/// Throws an exception whose place is that of the call.
[[noreturn]] inline void Throw(yStatus status, const std::source_location& where = std::source_location::current()) {
    throw Exception(static_cast<int>(where.line()), where.file_name(), status, where.function_name());
}

template <typename... Args>
[[noreturn]] void Throw(yStatus status, const LocatedFormat& format, const Args&... args) {
    throw Exception(static_cast<int>(format.where.line()), format.where.file_name(), status,
                    format.where.function_name(), format.text, args...);
}

/// Throws from within a handler; the exception being handled is nested in the new one.
[[noreturn]] inline void ThrowNested(yStatus status,
                                     const std::source_location& where = std::source_location::current()) {
    std::throw_with_nested(Exception(static_cast<int>(where.line()), where.file_name(), status, where.function_name()));
}

template <typename... Args>
[[noreturn]] void ThrowNested(yStatus status, const LocatedFormat& format, const Args&... args) {
    std::throw_with_nested(Exception(static_cast<int>(format.where.line()), format.where.file_name(), status,
                                     format.where.function_name(), format.text, args...));
}

/// Throws a textless exception with the status unless it is yOK.
inline void ThrowIfFailed(yStatus status, const std::source_location& where = std::source_location::current()) {
    if (status != yOK) {
        Throw(status, where);
    }
}

} // namespace Vor
