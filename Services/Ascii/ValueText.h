#pragma once

#include "Services/Ascii/LineFormat.h"
#include "VorMsg/ResultItem.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Services::Ascii {

/// What a field shows of a result.
enum class ValueKind {
    Any,         ///< the whole result, as what it is
    Measurement, ///< value and decision
    Value,
    Decision,
    Stamp, ///< frame, time in microseconds, encoder, encoder at its last index pulse, digital inputs
    Text
};

/// Texts in a result are cut behind this many bytes.
constexpr std::size_t MaxTextSize = 1024;

/// Appends the fields of one result, with the delimiter between them. `item` may be null: no result. Each kind but Any
/// has the same number of fields whatever the result is. Allocates nothing but to let `line` grow.
void AppendValue(std::string& line, const LineFormat& format, ValueKind kind, ResultItem item);

/// Appends a number; none that isn't finite.
void AppendNumber(std::string& line, const LineFormat& format, double value);

/// Appends a text in quotation marks, of which those inside are doubled; control characters become spaces, and a text
/// that isn't UTF-8 has question marks where it isn't ASCII.
void AppendQuoted(std::string& line, std::string_view text);

} // namespace Services::Ascii
