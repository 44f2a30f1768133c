#pragma once

#include "Vor/Node.h"

#include <vector>

namespace Vor::Properties {

class Structure;

namespace Internal {

/// The schemas of an array's elements, in their order, not owned.
class ReferenceArray : public Node {
public:
    /// Does nothing: the schemas belong to other objects.
    void CopyValues(const Node& other) override;

    void Accept(INodeVisitor& visitor) override;
    void Accept(INodeVisitorConst& visitor) const override;

    void Add(Structure* schema);

    /// Removes the last one; does nothing if there is none.
    void Pop();
    void Clear();

    /// Throws `yERROR_NOT_FOUND` if there is no such element, as `At` does.
    void Remove(unsigned long index);
    unsigned long Count() const { return static_cast<unsigned long>(schemas.size()); }
    Structure& At(unsigned long index) const;

private:
    std::vector<Structure*> schemas;
};

} // namespace Internal
} // namespace Vor::Properties
