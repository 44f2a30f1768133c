#pragma once

#include "Vor/ByteVector.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorApi {

/// A document of the resource tree. It is a handle: a copy is the same node, and `tree["member"]` is a handle to the
/// member that stays valid whatever is added. Members keep the order in which they were added. No lock: handles to
/// nodes of one tree are one object to threads.
///
/// Each handle keeps the whole tree. What is replaced occupies its memory until the last handle goes, so a tree is made
/// for one document, and not written again and again.
class VorDataTree {
public:
    enum class Kind { Null, Object, Array, Bool, Int64, UInt64, Double, Text, Binary };

    /// A new tree, null.
    VorDataTree();
    ~VorDataTree() = default;
    VorDataTree(const VorDataTree&) = default;
    VorDataTree(VorDataTree&&) noexcept = default;

    /// Makes the handle refer to another node. Not for `tree["member"] = ...`, which would change no tree.
    VorDataTree& operator=(const VorDataTree&) & = default;
    VorDataTree& operator=(VorDataTree&&) & noexcept = default;

    Kind GetKind() const;
    bool IsNull() const { return GetKind() == Kind::Null; }
    bool IsObject() const { return GetKind() == Kind::Object; }

    /// The member of that name, created as null if there is none; a node of another kind becomes an object first.
    VorDataTree operator[](const std::string& name);

    /// The member of that name; a new null tree if there is none.
    VorDataTree operator[](const std::string& name) const;

    bool Contains(const std::string& name) const;

    /// The names of an object's members in their order, empty for any other kind.
    std::vector<std::string> Names() const;

    /// An object or array of that kind keeps its members; a node of another kind becomes an empty one.
    void MakeObject();
    void MakeArray();

    /// Members of an object or elements of an array, else 0.
    std::size_t Count() const;

    /// Appends a null element; a node of another kind becomes an array first.
    VorDataTree Append();

    /// Throws `yERROR_NOT_FOUND` if there is no such element.
    VorDataTree At(std::size_t index) const;

    void SetNull();
    void Set(bool value);
    void Set(std::int64_t value);
    void Set(std::uint64_t value);
    void Set(double value);
    void Set(const std::string& value);
    void Set(const char* value);
    void Set(const Vor::Properties::ByteVector& value);

    /// These throw `yERROR_PARAMETER` if the node is of another kind. Integers of both kinds are returned if they fit.
    bool AsBool() const;
    std::int64_t AsInt64() const;
    std::uint64_t AsUInt64() const;
    double AsDouble() const;
    std::string AsText() const;
    Vor::Properties::ByteVector AsBinary() const;

    /// JSON text, indented or in one line. Bytes are written as base64.
    std::string Dump(bool indented) const;
    /// Appends what Dump returns, without a copy.
    void AppendTo(std::string& out, bool indented) const;

    /// How many bytes the whole tree occupies, about.
    std::size_t Size() const;

    nlohmann::json ToJson() const;
    static VorDataTree FromJson(const nlohmann::json& json);

private:
    class Memory;
    struct Node;
    class Storage;
    class Writer;

    VorDataTree(std::shared_ptr<Storage> storage, Node& node);

    std::shared_ptr<Storage> storage;
    Node* node;
};

} // namespace VorApi
