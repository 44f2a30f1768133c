#pragma once

#include "Vor/ArrayBase.h"
#include "Vor/INodeVisitor.h"
#include "Vor/IValueWriter.h"
#include "Vor/ReferenceArray.h"
#include "Vor/Structure.h"
#include "VorApi/Params/PropertyValue.h"

#include <type_traits>
#include <utility>

namespace Vor::Properties::Internal {

/// Writes values and schemas of a tree into a document. `Place` is one node of the document and can be copied:
/// `MakeObject()` keeps the members, `StartArray()` empties it, `Member(name)` and `Append()` return a place inside,
/// and there is a `Set` for each kind of value.
template <class Place>
class TreeWriter : private INodeVisitorConst, private IValueWriter {
public:
    void Write(const Node& node, Place target) {
        Place outer = std::exchange(place, std::move(target));
        node.Accept(*this);
        place = std::move(outer);
    }

    void WriteSchema(const Node& node, Place target) {
        target.MakeObject();
        ShapeWriter shape(*this, target);
        node.Accept(shape);
        if (const Structure* const schema = node.SchemaIfBuilt()) {
            for (const Member& keyword : schema->Members()) {
                Write(keyword.Target(), target.Member(keyword.Text()));
            }
            return;
        }
        if (const Node* const type = node.LoneType()) {
            Write(*type, target.Member("type"));
        }
        if (const IKeywordSource* const keywords = node.LoneKeywords()) {
            keywords->VisitKeywords([&](Name key, const Node& keyword) { Write(keyword, target.Member(key.Text())); });
        }
    }

private:
    /// Writes what follows from a node's kind to its schema.
    class ShapeWriter : public INodeVisitorConst {
    public:
        ShapeWriter(TreeWriter& writer, Place& target)
            : writer(writer)
            , target(target) {}

        void Visit(const ValueBase&) override {}
        void Visit(const Structure& structure) override {
            target.Member("type").Set("object");
            Place properties = target.Member("properties");
            properties.MakeObject();
            for (const Internal::Member& member : structure.Members()) {
                writer.WriteSchema(member.Target(), properties.Member(member.Text()));
            }
        }
        void Visit(const ArrayBase&) override { target.Member("type").Set("array"); }
        void Visit(const ReferenceArray&) override { target.Member("type").Set("array"); }

    private:
        TreeWriter& writer;
        Place& target;
    };

    void Visit(const ValueBase& value) override { value.WriteValue(*this); }
    void Visit(const Structure& structure) override {
        if (structure.SchemaOwner()) {
            WriteSchema(*structure.SchemaOwner(), std::move(place));
            return;
        }
        Place object = std::move(place);
        object.MakeObject();
        for (const Internal::Member& member : structure.Members()) {
            Write(member.Target(), object.Member(member.Text()));
        }
    }
    void Visit(const ArrayBase& array) override {
        Place list = std::move(place);
        list.StartArray();
        for (unsigned long i = 0; i < array.Count(); ++i) {
            Write(array.ItemAt(i), list.Append());
        }
    }
    void Visit(const ReferenceArray& array) override {
        Place list = std::move(place);
        list.StartArray();
        for (unsigned long i = 0; i < array.Count(); ++i) {
            Write(array.At(i), list.Append());
        }
    }

    void WriteBool(bool value) override { place.Set(value); }
    void WriteUInt16(std::uint16_t value) override { place.Set(static_cast<std::uint64_t>(value)); }
    void WriteUInt32(std::uint32_t value) override { place.Set(static_cast<std::uint64_t>(value)); }
    void WriteUInt64(std::uint64_t value) override { place.Set(value); }
    void WriteInt64(std::int64_t value) override { place.Set(value); }
    void WriteEnum(std::int32_t value) override { place.Set(static_cast<std::int64_t>(value)); }
    void WriteText(const std::string& value) override { place.Set(value); }
    void WriteBytes(const ByteVector& value) override { place.Set(value); }
    void WriteTextList(const std::vector<std::string>& value) override { WriteList(value); }
    void WriteUInt16List(const std::vector<std::uint16_t>& value) override { WriteList(value); }
    void WriteEnumList(const std::vector<std::int32_t>& value) override { WriteList(value); }

    template <class T>
    void WriteList(const std::vector<T>& values) {
        Place list = std::move(place);
        list.StartArray();
        for (const T& value : values) {
            if constexpr (std::is_same_v<T, std::string>) {
                list.Append().Set(value);
            } else if constexpr (std::is_unsigned_v<T>) {
                list.Append().Set(static_cast<std::uint64_t>(value));
            } else {
                list.Append().Set(static_cast<std::int64_t>(value));
            }
        }
    }

    Place place; ///< of the node that is written next, which takes it
};

} // namespace Vor::Properties::Internal
