#pragma once

namespace VorApi {
class VorDataTree;
}

namespace Vor::Properties {

class Node;

/// Property trees as data trees. What the data tree already contains stays unless it is written again.
class VorDataTreeSerializer {
public:
    static void Serialize(const Node& node, VorApi::VorDataTree tree);
    static void SerializeSchema(const Node& node, VorApi::VorDataTree tree);
};

} // namespace Vor::Properties
