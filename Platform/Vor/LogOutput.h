#pragma once

#include "Vor/LogRecord.h"

#include <functional>
#include <string_view>

namespace Vor {

/// The output of the log.
class LogOutput {
public:
    /// The format of the entries that Exception::LogBackTrace makes.
    static constexpr const char* BackTraceFormat = "Back trace of status %d:%s";

    /// From now on `write` is called with each entry that isn't below the minimum level, in place of the output to
    /// stderr; an empty function restores that. It is called on the thread that logs, on several at a time, with no
    /// lock held. A thread that is logging during the change may still call the former function once.
    static void Set(std::function<void(const LogRecord&)> write);

    /// The name in a record's title without its result and arguments: "Space::Class::Call" of "void
    /// Space::Class::Call(int)". Another title stays as it is.
    static std::string_view ShortName(std::string_view title);
};

} // namespace Vor
