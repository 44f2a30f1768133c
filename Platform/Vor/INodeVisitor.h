#pragma once

namespace Vor::Properties {

class Structure;

namespace Internal {
class ValueBase;
class ArrayBase;
class ReferenceArray;
} // namespace Internal

/// Called by `Node::Accept` with the node's kind. Visiting the children is up to the visitor.
class INodeVisitor {
public:
    virtual ~INodeVisitor() = default;

    virtual void Visit(Internal::ValueBase& value) = 0;
    virtual void Visit(Structure& structure) = 0;
    virtual void Visit(Internal::ArrayBase& array) = 0;
    virtual void Visit(Internal::ReferenceArray& array) = 0;
};

class INodeVisitorConst {
public:
    virtual ~INodeVisitorConst() = default;

    virtual void Visit(const Internal::ValueBase& value) = 0;
    virtual void Visit(const Structure& structure) = 0;
    virtual void Visit(const Internal::ArrayBase& array) = 0;
    virtual void Visit(const Internal::ReferenceArray& array) = 0;
};

} // namespace Vor::Properties
