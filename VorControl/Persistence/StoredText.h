#pragma once

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorControl::Persistence {

/// The text of a key of an object; nothing when the document isn't an object, or has no such key or no text there.
/// The text ends at its first zero character, as it is passed on as a C text.
std::optional<std::string> StoredText(const nlohmann::json& object, const char* key);

} // namespace VorControl::Persistence
