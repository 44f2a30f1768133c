#include "VorControl/Protocol/MetricsDocument.h"

#include "Vor/Structure.h"
#include "VorCommon/MetricsJsonSerializer.h"
#include "VorCommon/MetricsVorDataTreeSerializer.h"

#include <nlohmann/json.hpp>

namespace VorControl::Protocol {

void MetricsToVorDataTree(const Vor::Properties::Structure& metrics, bool withSchema, VorApi::VorDataTree tree) {
    VorCommon::MetricsVorDataTreeSerializer::Serialize(metrics, tree);
    if (withSchema) {
        VorCommon::MetricsVorDataTreeSerializer::SerializeSchema(metrics, tree["_schema"]);
    }
}

nlohmann::json MetricsToJson(const Vor::Properties::Structure& metrics, bool withSchema) {
    nlohmann::json json = VorCommon::MetricsJsonSerializer::Serialize(metrics);
    if (withSchema) {
        json["_schema"] = VorCommon::MetricsJsonSerializer::SerializeSchema(metrics);
    }
    return json;
}

} // namespace VorControl::Protocol
