#pragma once

#include "VorApi/VorDataTree.h"

#include <nlohmann/json_fwd.hpp>

namespace Vor::Properties {
class Structure;
}

namespace VorControl::Protocol {

/// Figures as a document, with their schema in the member "_schema" if `withSchema`.
void MetricsToVorDataTree(const Vor::Properties::Structure& metrics, bool withSchema, VorApi::VorDataTree tree);
nlohmann::json MetricsToJson(const Vor::Properties::Structure& metrics, bool withSchema);

} // namespace VorControl::Protocol
