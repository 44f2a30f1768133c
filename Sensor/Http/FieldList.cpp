#include "Sensor/Http/FieldList.h"

#include <cstddef>

namespace Sensor::Http {

std::string_view Trim(std::string_view text) {
    constexpr std::string_view Spaces = " \t";
    const std::size_t begin = text.find_first_not_of(Spaces);
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(Spaces) + 1 - begin);
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return lower;
}

std::vector<std::string_view> SplitList(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    bool quoted = false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || (text[i] == separator && !quoted)) {
            if (const std::string_view part = Trim(text.substr(begin, i - begin)); !part.empty()) {
                parts.push_back(part);
            }
            begin = i + 1;
        } else if (text[i] == '"') {
            quoted = !quoted;
        }
    }
    return parts;
}

} // namespace Sensor::Http
