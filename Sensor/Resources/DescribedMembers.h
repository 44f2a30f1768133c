#pragma once

#include <nlohmann/json.hpp>

/// Schemas of members that clients can't set, for documents that are made as JSON.
namespace Sensor::Resources {

inline nlohmann::json Described(const nlohmann::json& type, const char* title) {
    return {{"type", type}, {"title", title}, {"readOnly", true}};
}

inline nlohmann::json DescribedWithUnit(const nlohmann::json& type, const char* title, const char* unit) {
    nlohmann::json schema = Described(type, title);
    schema["units"] = unit;
    return schema;
}

inline nlohmann::json DescribedList(const nlohmann::json& items, const char* title) {
    nlohmann::json schema = Described("array", title);
    schema["items"] = items;
    return schema;
}

inline nlohmann::json DescribedObject(const nlohmann::json& properties) {
    return {{"type", "object"}, {"properties", properties}};
}

inline nlohmann::json OrNull(const char* type) {
    return {type, "null"};
}

} // namespace Sensor::Resources
