#include "Vor/VorDataTreeSerializer.h"

#include "Vor/TreeWriter.h"
#include "VorApi/VorDataTree.h"

#include <utility>

namespace Vor::Properties {

namespace {

/// A node of a data tree as the target of a TreeWriter.
class DataTreePlace {
public:
    DataTreePlace() = default;
    explicit DataTreePlace(VorApi::VorDataTree tree)
        : tree(std::move(tree)) {}

    void MakeObject() { tree.MakeObject(); }
    void StartArray() {
        tree.SetNull();
        tree.MakeArray();
    }
    DataTreePlace Member(const std::string& name) { return DataTreePlace(tree[name]); }
    DataTreePlace Append() { return DataTreePlace(tree.Append()); }

    template <class T>
    void Set(const T& value) {
        tree.Set(value);
    }

private:
    VorApi::VorDataTree tree;
};

} // namespace

void VorDataTreeSerializer::Serialize(const Node& node, VorApi::VorDataTree tree) {
    Internal::TreeWriter<DataTreePlace>().Write(node, DataTreePlace(std::move(tree)));
}

void VorDataTreeSerializer::SerializeSchema(const Node& node, VorApi::VorDataTree tree) {
    Internal::TreeWriter<DataTreePlace>().WriteSchema(node, DataTreePlace(std::move(tree)));
}

} // namespace Vor::Properties
