#pragma once

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorControl::Persistence {

/// The text under a key of an object; nothing when the document isn't an object, lacks the key or has no text there.
/// What the framework hands on as a C text ends at a zero character, so the text does, too.
std::optional<std::string> StoredText(const nlohmann::json& object, const char* key);

} // namespace VorControl::Persistence
