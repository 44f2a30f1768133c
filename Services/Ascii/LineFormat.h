#pragma once

#include <cstdint>
#include <string>

namespace Services::Ascii {

enum class Notation : std::int32_t { Fixed = 0, Scientific = 1, Shortest = 2 };

/// How lines and the values in them are written.
struct LineFormat {
    std::string delimiter = ",";     ///< between the fields of a line
    std::string terminator = "\r\n"; ///< control characters; each of them also ends a received line
    char decimalSeparator = '.';
    Notation notation = Notation::Fixed;
    int decimals = 3;                    ///< digits after the separator, except for Notation::Shortest
    std::string invalidText = "INVALID"; ///< written for a missing value
};

} // namespace Services::Ascii
