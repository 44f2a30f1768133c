#pragma once

#include "Services/Ascii/LineFormat.h"
#include "VorMsg/ResultItem.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Services::Ascii {

/// The part of a result that is written.
enum class ValueKind {
    Any,         ///< the whole result, by its own type
    Measurement, ///< value and decision
    Value,
    Decision,
    Stamp, ///< frame, time in microseconds, encoder, encoder at its last index pulse, digital inputs
    Text
};

/// Longer texts of a result are cut, in bytes.
constexpr std::size_t MaxTextSize = 1024;

/// Appends the fields of one result, with the delimiter between them. `item` may be null: no result. The number of
/// fields depends on the kind only, except for Any. Allocates only when `line` grows.
void AppendValue(std::string& line, const LineFormat& format, ValueKind kind, ResultItem item);

/// Appends a finite number.
void AppendNumber(std::string& line, const LineFormat& format, double value);

/// Appends a text in quotation marks. Quotation marks inside are doubled, control characters become spaces, and in a
/// text that isn't UTF-8 each byte that isn't ASCII becomes a question mark.
void AppendQuoted(std::string& line, std::string_view text);

} // namespace Services::Ascii
