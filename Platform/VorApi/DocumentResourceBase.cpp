#include "VorApi/DocumentResourceBase.h"

#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Node.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorApi/Completion.h"

#include <exception>

#include <nlohmann/json.hpp>

namespace VorApi {

using Vor::Properties::JsonSerializer;
using Vor::Properties::Node;
using Vor::Properties::VorDataTreeSerializer;

void DocumentResourceBase::UpdateDocument(const RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

bool DocumentResourceBase::HasDocument(const RequestInfoEx& request) {
    try {
        RequireDocument(request);
        return true;
    } catch (...) {
        return false;
    }
}

void DocumentResourceBase::RequireDocument(const RequestInfoEx& request) {
    ResponseInfoEx response([] { return Completion([](const std::exception_ptr&, const VorDataTree&) {}); });
    VorDataTree unused;
    unused.MakeObject();
    Document(request, response, unused);
}

void DocumentResourceBase::NodeToVorDataTree(const Node& node, const RequestInfoEx& request, VorDataTree tree,
                                             bool withSchema) {
    VorDataTreeSerializer::Serialize(node, tree);
    if (withSchema && request.WantsSchema()) {
        VorDataTreeSerializer::SerializeSchema(node, tree["_schema"]);
    }
}

void DocumentResourceBase::NodeFromVorDataTree(Node& node, const VorDataTree& tree) {
    NodeFromJson(node, tree.ToJson());
}

void DocumentResourceBase::NodeFromJson(Node& node, const nlohmann::json& json) {
    JsonSerializer::Deserialize(node, json);
}

void DocumentResourceBase::NodeFromJsonAndValidate(Node& node, const nlohmann::json& json) {
    ValidateJsonFromNode(node, json);
    NodeFromJson(node, json);
}

void DocumentResourceBase::ValidateJsonFromNode(const Node& node, const nlohmann::json& json) {
    JsonSerializer::Validate(node, json);
}

} // namespace VorApi
