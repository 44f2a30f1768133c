#include "Sensor/Http/MediaTypes.h"

#include "Sensor/Http/FieldList.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace Sensor::Http {

namespace {

struct MediaType {
    std::string type; ///< in small letters
    std::vector<std::string> parameters;

    /// The value of a parameter in small letters, without quotation marks; empty when it's missing.
    std::string Parameter(std::string_view name) const {
        for (const std::string& parameter : parameters) {
            const std::size_t equals = parameter.find('=');
            if (Trim(std::string_view(parameter).substr(0, equals)) == name && equals != std::string::npos) {
                std::string value(Trim(std::string_view(parameter).substr(equals + 1)));
                std::erase(value, '"');
                return value;
            }
        }
        return "";
    }
};

MediaType ParseMediaType(std::string_view text) {
    MediaType parsed;
    const auto parts = SplitList(text, ';');
    for (const std::string_view part : parts) {
        (parsed.type.empty() ? parsed.type : parsed.parameters.emplace_back()) = LowerCase(part);
    }
    return parsed;
}

/// Whether a weight such as "0.000" is none (RFC 9110, 12.4.2).
bool IsZeroWeight(std::string_view weight) {
    return weight.starts_with('0') && weight.find_first_not_of("0.") == std::string_view::npos;
}

} // namespace

bool IsContentType(const HttpFields& fields, std::initializer_list<std::string_view> types) {
    const MediaType given = ParseMediaType(fields.Find("Content-Type").value_or(""));
    const std::string charset = given.Parameter("charset");
    return std::ranges::find(types, given.type) != types.end() && (charset.empty() || charset == "utf-8");
}

bool AcceptsExplicitly(const HttpFields& fields, std::string_view type) {
    const std::string accept = fields.Find("Accept").value_or("");
    return std::ranges::any_of(SplitList(accept, ','), [&](std::string_view range) {
        const MediaType parsed = ParseMediaType(range);
        return parsed.type == type && !IsZeroWeight(parsed.Parameter("q"));
    });
}

} // namespace Sensor::Http
