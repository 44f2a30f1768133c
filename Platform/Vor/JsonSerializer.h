#pragma once

#include <nlohmann/json_fwd.hpp>

namespace Vor::Properties {

class Node;

/// Property trees as JSON.
class JsonSerializer {
public:
    /// The values of `node` and all below it.
    static nlohmann::json Serialize(const Node& node);

    /// The registered keywords of `node` and, under "properties" and "items", of all below it.
    static nlohmann::json SerializeSchema(const Node& node);

    /// Assigns what `json` holds, in the order of registration. Keys that the tree lacks are ignored, members that
    /// `json` lacks keep their value, read-only values are assigned, write-only ones are not. An array gets the
    /// document's length. Handlers of the end of an update run last.
    ///
    /// Limits aren't checked: see `Validate`. A value of the wrong kind or out of its type's range, and more than
    /// `MaxItems` elements in all arrays, throw `yERROR_PARAMETER` with a text that names the place and what is
    /// expected there, before anything is assigned. If a change handler throws, what was assigned before stays.
    static void Deserialize(Node& node, const nlohmann::json& json);

    /// Calls `ValidateValue` of each value that `json` holds, in the order of registration, and throws at the first
    /// that is refused, be it by its limits, its kind or the number of elements. Assigns nothing.
    static void Validate(const Node& node, const nlohmann::json& json);

    /// How many elements the arrays of one document may have in all.
    static constexpr unsigned long MaxItems = 65536;
};

} // namespace Vor::Properties
