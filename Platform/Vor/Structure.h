#pragma once

#include "Vor/Node.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Vor::Properties {

namespace Internal {

/// A named node of a structure, which doesn't own it.
class Member {
public:
    Member(Name name, Node& node, bool copied)
        : name(name)
        , nodeAndCopied(reinterpret_cast<std::uintptr_t>(&node) | (copied ? 1U : 0U)) {}

    Name Key() const { return name; }
    const std::string& Text() const { return name.Text(); }
    Node& Target() const {
        return *reinterpret_cast<Node*>(nodeAndCopied & ~std::uintptr_t(1)); // NOLINT(performance-no-int-to-ptr)
    }
    bool IsCopied() const { return (nodeAndCopied & 1U) != 0; }

private:
    Name name;
    std::uintptr_t nodeAndCopied;
};

} // namespace Internal

/// Named children in the order of their registration, not owned: they must outlive the registration, not the structure.
class Structure : public Node {
public:
    /// `copied`: whether `CopyValues` copies a child that is registered without saying so.
    explicit Structure(bool copied);
    ~Structure() override;

    void CheckValidationAndCollect(std::vector<std::string>& errors, unsigned long context) override;
    void RetrieveChangedParameters(std::vector<Node*>& changed) override;
    void ResetChangedParameters() override;

    /// Copies each child of which `other` has one of the same name.
    void CopyValues(const Node& other) override;

    void Accept(INodeVisitor& visitor) override;
    void Accept(INodeVisitorConst& visitor) const override;

    /// A name that is registered already gets the new node in its place.
    void Register(Internal::Name name, Node& child);
    void Register(Internal::Name name, Node& child, bool copied);

    /// Does nothing if there is no such child.
    void Deregister(Internal::Name name);

    /// Throws `yERROR_NOT_FOUND`.
    Node& At(std::string_view name) const;

    /// Null if there is no such child. `FindKey` is the faster one for a caller that has the key.
    Node* Find(std::string_view name) const;
    Node* FindKey(Internal::Name name) const;

    const std::vector<Internal::Member>& Members() const { return members; }

    /// The node whose keywords this structure holds; null if it isn't a schema.
    const Node* SchemaOwner() const { return schemaOwner; }

private:
    friend class Node;
    using Index = std::unordered_map<std::string_view, std::size_t>;

    static constexpr std::size_t NotFound = static_cast<std::size_t>(-1);

    std::size_t PositionOf(std::string_view name) const;
    std::size_t PositionOf(Internal::Name name) const;
    void BuildIndex();

    bool copiedByDefault;
    std::vector<Internal::Member> members;
    /// Finds a child by name once there are many.
    std::unique_ptr<Index> index;
    const Node* schemaOwner = nullptr;
};

} // namespace Vor::Properties
