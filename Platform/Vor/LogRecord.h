#pragma once

#include <cstdint>
#include <string>

namespace Vor {

/// One entry of the log.
struct LogRecord {
    std::uint64_t level = 0;
    /// The function that logs or, for the user's log, a title.
    std::string title;
    /// The text before its conversions were filled.
    std::string format;
    std::string text;
    std::string path;
    int line = 0;
};

} // namespace Vor
