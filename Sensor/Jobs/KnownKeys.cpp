#include "Sensor/Jobs/KnownKeys.h"

#include "Sensor/Jobs/ListedNames.h"
#include "Vor/Exception.h"
#include "yApi/yStatus.h"

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;

std::string MemberAt(const std::string& place, const std::string& key) {
    return place.empty() ? key : place + "." + key;
}

std::string ElementAt(const std::string& place, std::size_t index) {
    return place + "[" + std::to_string(index) + "]";
}

void RequireKnown(const json& document, const json& known, const std::string& place) {
    if (document.is_object() && known.is_object()) {
        for (const auto& [key, value] : document.items()) {
            const std::string at = MemberAt(place, key);
            const auto found = known.find(key);
            if (found == known.end()) {
                std::vector<std::string> names;
                for (const auto& item : known.items()) {
                    names.push_back(item.key());
                }
                Vor::Throw(yERROR_PARAMETER, "%s: unknown key. Expected one of: %s.", at, Listed(names));
            }
            RequireKnown(value, *found, at);
        }
    } else if (document.is_array() && known.is_array()) {
        for (std::size_t i = 0; i < document.size() && i < known.size(); ++i) {
            RequireKnown(document[i], known[i], ElementAt(place, i));
        }
    }
}

} // namespace

void RequireKnownKeys(const json& document, const json& known) {
    RequireKnown(document, known, "");
}

} // namespace Sensor::Jobs
