#pragma once

#include <string>

namespace Sensor {

/// The text with a question mark in place of each control character, of which a job's texts may hold some.
std::string PrintableText(std::string text);

/// The text, filled up with spaces to a number of characters. It is UTF-8.
std::string PaddedText(const std::string& text, std::size_t width);

/// Characters of a text in UTF-8.
std::size_t TextWidth(const std::string& text);

} // namespace Sensor
