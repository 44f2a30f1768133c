#pragma once

#include <cstdint>
#include <string>

namespace Services::Ascii {

enum class Notation : std::int32_t { Fixed = 0, Scientific = 1, Shortest = 2 };

/// How lines and the values in them are written.
struct LineFormat {
    std::string delimiter = ",";     ///< between the fields of a line
    std::string terminator = "\r\n"; ///< control characters; each of them ends a received line, too
    char decimalSeparator = '.';
    Notation notation = Notation::Fixed;
    int decimals = 3;                    ///< behind the separator; Notation::Shortest has as many as the value needs
    std::string invalidText = "INVALID"; ///< stands for a value that is missing
};

} // namespace Services::Ascii
