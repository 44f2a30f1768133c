#include "VorControl/Persistence/StoredText.h"

#include <nlohmann/json.hpp>

namespace VorControl::Persistence {

std::optional<std::string> StoredText(const nlohmann::json& object, const char* key) {
    if (!object.is_object()) {
        return std::nullopt;
    }
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
        return std::nullopt;
    }
    return found->get_ref<const std::string&>().c_str();
}

} // namespace VorControl::Persistence
