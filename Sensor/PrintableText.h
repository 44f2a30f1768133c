#pragma once

#include <string>

namespace Sensor {

/// Replaces each control character with a question mark. The texts of a job may contain control characters.
std::string PrintableText(std::string text);

/// Appends spaces to a text in UTF-8, up to `width` characters.
std::string PaddedText(const std::string& text, std::size_t width);

/// The number of characters of a text in UTF-8.
std::size_t TextWidth(const std::string& text);

} // namespace Sensor
