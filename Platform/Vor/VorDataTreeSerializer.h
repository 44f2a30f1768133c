#pragma once

namespace VorApi {
class VorDataTree;
}

namespace Vor::Properties {

class Node;

/// Property trees as data trees. What the tree holds already stays, except for what is written anew.
class VorDataTreeSerializer {
public:
    static void Serialize(const Node& node, VorApi::VorDataTree tree);
    static void SerializeSchema(const Node& node, VorApi::VorDataTree tree);
};

} // namespace Vor::Properties
