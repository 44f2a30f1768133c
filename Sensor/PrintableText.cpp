#include "Sensor/PrintableText.h"

#include "Vor/Format.h"
#include "Vor/Utf8.h"

#include <algorithm>
#include <string_view>

namespace Sensor {

namespace {

constexpr std::size_t MaxSequence = 4;

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The bytes of the character at the front of the text; 0 when there is none in UTF-8.
std::size_t CharacterLength(std::string_view text) {
    for (std::size_t length = 1; length <= std::min(text.size(), MaxSequence); ++length) {
        if (Vor::IsUtf8(text.substr(0, length))) {
            return length;
        }
    }
    return 0;
}

/// The code point of a character in UTF-8.
unsigned CodeOf(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character.front());
    if (character.size() == 1) {
        return lead;
    }
    unsigned code = lead & (0xFFU >> (character.size() + 1));
    for (const char byte : character.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
    }
    return code;
}

bool IsPrintable(unsigned code) {
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool changesLines = code >= 0x2028 && code <= 0x202E;
    const bool changesDirection =
        code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2066 && code <= 0x2069);
    return !isControl && !changesLines && !changesDirection;
}

std::string Escaped(unsigned code) {
    switch (code) {
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return Vor::Format(code < 0x80 ? "\\x%02x" : "\\u%04x", code);
    }
}

} // namespace

std::string PrintableText(const std::string& text) {
    std::string printable;
    printable.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = std::string_view(text).substr(at);
        const std::size_t length = CharacterLength(rest);
        if (length == 0) {
            printable += Vor::Format("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(rest.front())));
            ++at;
            continue;
        }
        const std::string_view character = rest.substr(0, length);
        const unsigned code = CodeOf(character);
        printable += IsPrintable(code) ? std::string(character) : Escaped(code);
        at += length;
    }
    return printable;
}

std::string AbridgedText(const std::string& text, std::size_t limit) {
    if (text.size() <= limit) {
        return text;
    }
    std::size_t front = limit / 4 * 3;
    std::size_t back = text.size() - (limit - front);
    while (front > 0 && IsContinuation(text[front])) {
        --front;
    }
    while (back < text.size() && IsContinuation(text[back])) {
        ++back;
    }
    return text.substr(0, front) + "... (" + Counted(back - front, "byte") + " left out) ..." + text.substr(back);
}

std::string LoggedText(const std::string& text) {
    constexpr std::size_t MaxText = 1000;
    return PrintableText(AbridgedText(text, MaxText));
}

std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string PaddedText(const std::string& text, std::size_t width) {
    const std::size_t own = TextWidth(text);
    return own < width ? text + std::string(width - own, ' ') : text;
}

std::size_t TextWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return !IsContinuation(byte); }));
}

} // namespace Sensor
