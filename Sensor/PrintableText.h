#pragma once

#include <string>

namespace Sensor {

/// Escapes what could forge a line or change a terminal: control characters, "\n" or "\x1b"; bytes that aren't UTF-8,
/// "\xff"; characters that change the direction of text or separate lines, "\u202e". For texts of jobs and of clients.
std::string PrintableText(const std::string& text);

/// A text of at most `limit` bytes as it is; of a longer one the beginning and the end, with the number of bytes that
/// are left out between them. Characters of UTF-8 stay whole.
std::string AbridgedText(const std::string& text, std::size_t limit);

/// A text of the log as users read it: printable, of at most 1000 bytes before that, since clients determine the length
/// of some.
std::string LoggedText(const std::string& text);

/// "1 frame", "2 frames".
std::string Counted(std::size_t count, const std::string& noun);

/// Appends spaces to a text in UTF-8, up to `width` characters.
std::string PaddedText(const std::string& text, std::size_t width);

/// The number of characters of a text in UTF-8.
std::size_t TextWidth(const std::string& text);

} // namespace Sensor
