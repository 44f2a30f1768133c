#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Vor {

class DocumentErrors;

namespace Properties {

class Node;

/// As JsonSerializer::Validate, but adds all values that are refused to `errors`. `pointer` is the place of `json` in
/// the document that they belong to.
void ValidateDocument(const Node& node, const nlohmann::json& json, DocumentErrors& errors, const std::string& pointer);

/// As JsonSerializer::Deserialize, for the part at `pointer` of the document that the refused values belong to.
void DeserializeDocument(Node& node, const nlohmann::json& json, const std::string& pointer);

} // namespace Properties
} // namespace Vor
