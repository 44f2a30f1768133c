#pragma once

#include "Vor/ByteVector.h"

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace Vor::Properties::Internal {

/// A node of a JSON document as the target of a `TreeWriter`.
class JsonPlace {
public:
    JsonPlace() = default;
    explicit JsonPlace(nlohmann::json& target)
        : target(&target) {}

    void MakeObject() {
        if (!target->is_object()) {
            *target = nlohmann::json::object();
        }
    }
    void StartArray() { *target = nlohmann::json::array(); }
    JsonPlace Member(const std::string& name) { return JsonPlace((*target)[name]); }
    JsonPlace Append() {
        target->push_back(nullptr);
        return JsonPlace(target->back());
    }

    void Set(bool value) { *target = value; }
    void Set(std::int64_t value) { *target = value; }
    void Set(std::uint64_t value) { *target = value; }
    void Set(const std::string& value) { *target = value; }
    void Set(const char* value) { *target = value; }
    void Set(const ByteVector& value) { *target = value.ToBase64(); }

private:
    nlohmann::json* target = nullptr;
};

} // namespace Vor::Properties::Internal
