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
    /// `MaxItems` elements in all arrays, throw a DocumentException, `yERROR_PARAMETER` with texts that name the place
    /// and what is expected there, before anything is assigned. If a change handler throws, what was assigned stays.
    static void Deserialize(Node& node, const nlohmann::json& json);

    /// Calls `ValidateValue` of each value that `json` holds, in the order of registration. Throws a DocumentException
    /// if some are refused, be it by their limits, their kind or the number of elements. Assigns nothing.
    static void Validate(const Node& node, const nlohmann::json& json);

    /// How many elements the arrays of one document may have in all.
    static constexpr unsigned long MaxItems = 65536;
};

} // namespace Vor::Properties
