#include "Sensor/Http/HttpRequest.h"

#include <algorithm>

namespace Sensor::Http {

namespace {

constexpr char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsSameName(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, {}, Lower, Lower);
}

} // namespace

std::optional<std::string> HttpFields::Find(std::string_view name) const {
    std::optional<std::string> found;
    for (const auto& [fieldName, value] : fields) {
        if (IsSameName(fieldName, name)) {
            found = found ? *found + ", " + value : value;
        }
    }
    return found;
}

std::size_t HttpFields::Count(std::string_view name) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(fields, [name](const auto& field) { return IsSameName(field.first, name); }));
}

} // namespace Sensor::Http
