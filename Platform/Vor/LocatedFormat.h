#pragma once

#include <source_location>
#include <string>

namespace Vor {

/// A format text together with the place of the call that it was passed to.
struct LocatedFormat {
    LocatedFormat(const char* format, // NOLINT(google-explicit-constructor): made by passing a text
                  const std::source_location& location = std::source_location::current())
        : text(format)
        , where(location) {}
    LocatedFormat(const std::string& format, // NOLINT(google-explicit-constructor): made by passing a text
                  const std::source_location& location = std::source_location::current())
        : text(format.c_str())
        , where(location) {}

    const char* text;
    std::source_location where;
};

} // namespace Vor
