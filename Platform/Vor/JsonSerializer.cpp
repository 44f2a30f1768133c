#include "Vor/JsonSerializer.h"

#include "Vor/ArrayBase.h"
#include "Vor/DocumentErrors.h"
#include "Vor/DocumentValidation.h"
#include "Vor/INodeVisitor.h"
#include "Vor/JsonPlace.h"
#include "Vor/JsonReader.h"
#include "Vor/Structure.h"
#include "Vor/TreeWriter.h"
#include "VorApi/Event.h"
#include "VorApi/Params/PropertyValue.h"

#include <memory>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

namespace Vor::Properties {

namespace {

using Json = nlohmann::json;
using Internal::JsonPath;

const Json::object_t& ObjectOf(const Json& json, const JsonPath& path) {
    if (!json.is_object()) {
        RefuseJson(path, "an object", json);
    }
    return json.get_ref<const Json::object_t&>();
}

const Json::array_t& ArrayOf(const Json& json, const JsonPath& path) {
    if (!json.is_array()) {
        RefuseJson(path, "an array", json);
    }
    return json.get_ref<const Json::array_t&>();
}

/// Calls `visit(child, json, path)` for each member that may be read and that the document has.
template <class Visit>
void ForEachMember(const Structure& structure, const Json& json, const JsonPath& path, Visit visit) {
    const Json::object_t& object = ObjectOf(json, path);
    const auto& members = structure.Members();
    // By index, since a handler that a visit runs may register a member.
    for (std::size_t i = 0; i < members.size(); ++i) { // NOLINT(modernize-loop-convert)
        const Internal::Member member = members[i];
        if (member.Target().IsWriteOnly()) {
            continue;
        }
        const auto found = object.find(member.Text());
        if (found != object.end()) {
            const JsonPath childPath{&path, &member.Text()};
            visit(member.Target(), found->second, childPath);
        }
    }
}

/// A place as a JSON pointer (RFC 6901), such as "/map/3/source".
std::string PointerOf(const JsonPath& path) {
    if (path.parent == nullptr) {
        return {};
    }
    std::string pointer = PointerOf(*path.parent) + "/";
    if (path.member == nullptr) {
        return pointer + std::to_string(path.index);
    }
    for (const char c : *path.member) {
        if (c == '~' || c == '/') {
            pointer += c == '~' ? "~0" : "~1";
        } else {
            pointer += c;
        }
    }
    return pointer;
}

/// Checks a document against a tree without changing the tree: the kinds of all values, the number of elements and,
/// with `validate`, the values' own validation. Adds what is wrong to `errors`, with places that begin with `pointer`.
class Checker : private INodeVisitorConst {
public:
    Checker(bool validate, DocumentErrors& errors, std::string pointer)
        : validate(validate)
        , errors(errors)
        , pointer(std::move(pointer)) {}

    void Check(const Node& node, const Json& source, const JsonPath& sourcePath) {
        const Json* const outerJson = std::exchange(json, &source);
        const JsonPath* const outerPath = std::exchange(path, &sourcePath);
        if (!errors.IsFull()) {
            Collect(node);
        }
        json = outerJson;
        path = outerPath;
    }

private:
    void Collect(const Node& node) {
        try {
            node.Accept(*this);
        } catch (const Exception& e) {
            errors.Add(pointer + PointerOf(*path), e);
        }
    }

    void Visit(const Internal::ValueBase& value) override {
        if (validate) {
            Internal::JsonReader reader(*json, *path);
            value.ValidateValue(reader);
        } else {
            Internal::JsonKindCheck check(*json, *path);
            value.WriteValue(check);
        }
    }

    void Visit(const Structure& structure) override {
        ForEachMember(structure, *json, *path, [this](Node& child, const Json& childJson, const JsonPath& childPath) {
            Check(child, childJson, childPath);
        });
    }

    void Visit(const Internal::ArrayBase& array) override {
        const Json::array_t& list = ArrayOf(*json, *path);
        items += list.size();
        if (items > JsonSerializer::MaxItems) {
            RefuseJson(*path, "at most " + std::to_string(JsonSerializer::MaxItems) + " elements in all arrays", *json);
        }
        const JsonPath& listPath = *path;
        std::unique_ptr<Structure> made;
        for (unsigned long i = 0; i < list.size(); ++i) {
            const JsonPath itemPath{&listPath, nullptr, i};
            if (i >= array.Count() && !made) {
                made = array.MakeItem();
            }
            Check(i < array.Count() ? array.ItemAt(i) : *made, list[i], itemPath);
        }
    }

    void Visit(const Internal::ReferenceArray&) override {}

    const bool validate;
    DocumentErrors& errors;
    const std::string pointer;
    const Json* json = nullptr;
    const JsonPath* path = nullptr;
    std::size_t items = 0;
};

/// Assigns a document that was checked to a tree.
class Assigner : private INodeVisitor {
public:
    void Assign(Node& node, const Json& source, const JsonPath& sourcePath) {
        const Json* const outerJson = std::exchange(json, &source);
        const JsonPath* const outerPath = std::exchange(path, &sourcePath);
        node.Accept(*this);
        json = outerJson;
        path = outerPath;
    }

    /// Runs the handlers of the end of an update.
    void End() { updateEnd.Raise(); }

private:
    void Visit(Internal::ValueBase& value) override {
        Internal::JsonReader reader(*json, *path);
        value.ReadValue(reader, updateEnd);
    }

    void Visit(Structure& structure) override {
        ForEachMember(structure, *json, *path, [this](Node& child, const Json& childJson, const JsonPath& childPath) {
            Assign(child, childJson, childPath);
        });
    }

    void Visit(Internal::ArrayBase& array) override {
        const Json::array_t& list = ArrayOf(*json, *path);
        const JsonPath& listPath = *path;
        array.Resize(static_cast<unsigned long>(list.size()));
        for (unsigned long i = 0; i < list.size(); ++i) {
            const JsonPath itemPath{&listPath, nullptr, i};
            Assign(array.ItemAt(i), list[i], itemPath);
        }
    }

    void Visit(Internal::ReferenceArray&) override {}

    const Json* json = nullptr;
    const JsonPath* path = nullptr;
    Vor::Event<> updateEnd;
};

} // namespace

Json JsonSerializer::Serialize(const Node& node) {
    Json json;
    Internal::TreeWriter<Internal::JsonPlace>().Write(node, Internal::JsonPlace(json));
    return json;
}

Json JsonSerializer::SerializeSchema(const Node& node) {
    Json json;
    Internal::TreeWriter<Internal::JsonPlace>().WriteSchema(node, Internal::JsonPlace(json));
    return json;
}

void JsonSerializer::Deserialize(Node& node, const Json& json) {
    DeserializeDocument(node, json, "");
}

void JsonSerializer::Validate(const Node& node, const Json& json) {
    DocumentErrors errors;
    ValidateDocument(node, json, errors, "");
    errors.ThrowIfAny();
}

void DeserializeDocument(Node& node, const Json& json, const std::string& pointer) {
    if (node.IsWriteOnly()) {
        return;
    }
    const JsonPath root;
    DocumentErrors errors;
    Checker(false, errors, pointer).Check(node, json, root);
    errors.ThrowIfAny();
    Assigner assigner;
    assigner.Assign(node, json, root);
    assigner.End();
}

void ValidateDocument(const Node& node, const Json& json, DocumentErrors& errors, const std::string& pointer) {
    if (!node.IsWriteOnly()) {
        const JsonPath root;
        Checker(true, errors, pointer).Check(node, json, root);
    }
}

} // namespace Vor::Properties
