#pragma once

#include "Vor/LogRecord.h"

#include <functional>

namespace Vor {

/// Where the log goes.
class LogOutput {
public:
    /// The format of the entries that Exception::LogBackTrace makes.
    static constexpr const char* BackTraceFormat = "Back trace of status %d:%s";

    /// From here on `write` gets each entry that isn't below the minimum level, in place of stderr; an empty function
    /// gives stderr its place back. It is called on the thread that logs, on several at a time, with no lock held, and
    /// once more on each thread that is logging while it is replaced.
    static void Set(std::function<void(const LogRecord&)> write);
};

} // namespace Vor
