#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Remote {

/// A document without the members "_links", at any depth.
nlohmann::json WithoutLinks(const nlohmann::json& document);

/// JSON for a terminal, indented by `indent` blanks or, with -1, in one line. It remains JSON: in a line that has what
/// PrintableText would escape, characters that aren't of ASCII are escaped as "\u202e".
std::string PrintableJson(const nlohmann::json& document, int indent);

} // namespace Sensor::Remote
