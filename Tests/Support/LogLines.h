#pragma once

#include <regex>
#include <string>

namespace Tests {

/// The lines of a log without the time at their beginning. A line without a time stays as it is.
inline std::string WithoutTimes(const std::string& lines) {
    static const std::regex Time(R"((^|\n)\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z )");
    return std::regex_replace(lines, Time, "$1");
}

} // namespace Tests
