#pragma once

#include "VorApi/RequestInfoEx.h"
#include "VorApi/ResourceBase.h"
#include "VorApi/ResponseInfoEx.h"
#include "VorApi/VorDataTree.h"

#include <nlohmann/json_fwd.hpp>

namespace Vor::Properties {
class Node;
}

namespace VorApi {

/// A resource with a document.
class DocumentResourceBase : public virtual ResourceBase {
public:
    /// Writes the document into `data`, which is an empty object.
    virtual void Document(const RequestInfoEx& request, ResponseInfoEx& response, VorDataTree& data) = 0;
    /// Changes what the members of `json` name. Throws `yERROR_UNIMPLEMENTED` here.
    virtual void UpdateDocument(const RequestInfo& request, const nlohmann::json& json);

    /// Whether there is a document for the request.
    bool HasDocument(const RequestInfoEx& request);
    /// Whether clients can change documents of this resource.
    virtual bool IsUpdatable() const { return false; }

protected:
    /// Throws if Document would. Here it makes the document; overridden where that takes long.
    virtual void RequireDocument(const RequestInfoEx& request);

    /// Writes the values into `tree` and, if `withSchema` and the client wants it, the schema into its "_schema". Both
    /// keep what is there already.
    static void NodeToVorDataTree(const Vor::Properties::Node& node, const RequestInfoEx& request, VorDataTree tree,
                                  bool withSchema);
    /// Assigns the members that the node has, without validation; others are ignored. A value of the wrong kind throws
    /// `yERROR_PARAMETER`, and nothing is assigned.
    static void NodeFromVorDataTree(Vor::Properties::Node& node, const VorDataTree& tree);
    static void NodeFromJson(Vor::Properties::Node& node, const nlohmann::json& json);
    /// As NodeFromJson, after ValidateJsonFromNode.
    static void NodeFromJsonAndValidate(Vor::Properties::Node& node, const nlohmann::json& json);
    /// Throws what JsonSerializer::Validate throws. Assigns nothing.
    static void ValidateJsonFromNode(const Vor::Properties::Node& node, const nlohmann::json& json);
};

} // namespace VorApi
