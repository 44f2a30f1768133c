#pragma once

#include "Vor/HandlerList.h"
#include "Vor/NameTable.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Vor::Properties {

class INodeVisitor;
class INodeVisitorConst;
class Node;
class Structure;

namespace Internal {

/// The keywords that a node has from the start. They have no nodes until the schema is built.
class IKeywordSource {
public:
    /// Registers a node for each keyword in the schema, which has "type" by then.
    virtual void RegisterKeywords() = 0;

    /// Calls `visit` with each keyword in the order of the schema. The node may exist during the call only.
    virtual void VisitKeywords(const std::function<void(Name key, const Node& keyword)>& visit) const = 0;

protected:
    ~IKeywordSource() = default;
};

} // namespace Internal

/// An element of a property tree: a value, a structure or an array. Nodes refer to each other and never own each other:
/// a child and a schema keyword are members of the class that registers them, and one node may be in several trees.
/// No lock: the owner of a tree serialises access to it.
class Node {
public:
    Node();
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    virtual ~Node();

    /// Appends the message of each failed validation to `errors`. `context` is passed down the tree unchanged.
    virtual void CheckValidationAndCollect(std::vector<std::string>& errors, unsigned long context);

    /// Appends the nodes whose value was changed.
    virtual void RetrieveChangedParameters(std::vector<Node*>& changed);
    virtual void ResetChangedParameters();

    /// Copies values and keywords of `other`, which is of the same kind; throws `std::bad_cast` if it isn't.
    virtual void CopyValues(const Node& other);

    /// A write-only node is written to documents and never read from one.
    virtual void SetWriteOnly(bool writeOnly);

    virtual void Accept(INodeVisitor& visitor) = 0;
    virtual void Accept(INodeVisitorConst& visitor) const = 0;

    bool IsWriteOnly() const { return writeOnly; }

    /// A handler runs before a new value is stored; when it throws, the old value stays. It may be empty, and then
    /// fails with `std::bad_function_call`.
    HandlerId AddChangeHandler(std::function<void(Node&)> handler);
    void RemoveChangeHandler(HandlerId& id);

    bool HasChangeHandlers() const;

    /// Whether change handlers of this node are running, so that its old value is still stored.
    bool IsChanging() const;

    /// The registered keywords in their order. The structure is built by the first call and lives as long as the node.
    Structure& Schema();
    const Structure& Schema() const;

    /// The keywords, null while there are none but "type" and those of the keyword source.
    const Structure* SchemaIfBuilt() const;

    /// The node under "type" while `SchemaIfBuilt` is null, else null.
    const Node* LoneType() const;

    /// The keyword source, if any, while `SchemaIfBuilt` is null, else null.
    const Internal::IKeywordSource* LoneKeywords() const;

    /// `source` is a part of the same object. Its keywords follow those that are registered already.
    void SetKeywordSource(Internal::IKeywordSource& source);

    /// Attaches `keyword`, which must outlive its registration. A key that is registered already gets the new node in
    /// its place. `copied`: `CopySchema` copies the keyword's value.
    void RegisterSchema(Internal::Name key, Node& keyword, bool copied = true);

    /// Does nothing if there is no such keyword.
    void DeregisterSchema(Internal::Name key);

    /// Copies the values of the keywords that both nodes have and that are registered as copied here.
    void CopySchema(const Node& other);

protected:
    void RunChangeHandlers();

private:
    struct Extras;

    Extras& MakeExtras() const;
    Structure& BuildSchema() const;

    mutable std::unique_ptr<Extras> extras;
    /// The distances in bytes from this node to its "type" keyword, 0 once it is in the schema, and to its keyword
    /// source, 0 if there is none. Most nodes have no other keywords, and so need no schema.
    mutable std::int16_t typeOffset = 0;
    std::int16_t sourceOffset = 0;
    bool writeOnly = false;
};

} // namespace Vor::Properties
