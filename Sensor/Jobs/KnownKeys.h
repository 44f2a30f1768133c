#pragma once

#include <nlohmann/json_fwd.hpp>

namespace Sensor::Jobs {

/// Throws yERROR_PARAMETER, with the place and the keys known there, when the document has a key that isn't in `known`:
/// the serialized parameters that the document was read into.
void RequireKnownKeys(const nlohmann::json& document, const nlohmann::json& known);

} // namespace Sensor::Jobs
