#pragma once

#include "Vor/Node.h"
#include "Vor/Structure.h"

#include <memory>

namespace Vor::Properties::Internal {

/// A list of structures of one class, which owns them.
class ArrayBase : public Node {
public:
    void Accept(INodeVisitor& visitor) override;
    void Accept(INodeVisitorConst& visitor) const override;

    virtual void Resize(unsigned long count) = 0;
    virtual void Remove(unsigned long index) = 0;
    virtual void Clear() = 0;

    virtual unsigned long Count() const = 0;

    /// Throws `yERROR_NOT_FOUND` if there is no such element.
    virtual Structure& ItemAt(unsigned long index) = 0;
    virtual const Structure& ItemAt(unsigned long index) const = 0;

    /// Builds an element that isn't in the list; a document is checked against it before the list grows.
    virtual std::unique_ptr<Structure> MakeItem() const = 0;
};

} // namespace Vor::Properties::Internal
