#include "Sensor/PrintableText.h"

#include <algorithm>

namespace Sensor {

namespace {

bool IsControlCharacter(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

} // namespace

std::string PrintableText(std::string text) {
    std::replace_if(text.begin(), text.end(), IsControlCharacter, '?');
    return text;
}

std::string PaddedText(const std::string& text, std::size_t width) {
    const std::size_t own = TextWidth(text);
    return own < width ? text + std::string(width - own, ' ') : text;
}

std::size_t TextWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

} // namespace Sensor
