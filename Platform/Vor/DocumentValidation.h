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

} // namespace Properties
} // namespace Vor
