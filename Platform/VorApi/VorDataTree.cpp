#include "VorApi/VorDataTree.h"

#include "Vor/Exception.h"

#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

namespace VorApi {

namespace {

using Vor::Properties::ByteVector;

constexpr int IndentStep = 4;

std::string Quoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

struct VorDataTree::Data {
    struct Object {
        /// The keys of the index are the names in the nodes, which don't move.
        std::vector<std::pair<std::unique_ptr<const std::string>, std::shared_ptr<Data>>> members;
        std::unordered_map<std::string_view, std::size_t> index;

        std::shared_ptr<Data> Find(const std::string& name) const {
            const auto found = index.find(name);
            return found == index.end() ? nullptr : members[found->second].second;
        }
        std::shared_ptr<Data> Add(const std::string& name) {
            auto key = std::make_unique<const std::string>(name);
            index.emplace(*key, members.size());
            members.emplace_back(std::move(key), std::make_shared<Data>());
            return members.back().second;
        }
    };
    using Array = std::vector<std::shared_ptr<Data>>;

    /// In the order of Kind.
    std::variant<std::monostate, Object, Array, bool, std::int64_t, std::uint64_t, double, std::string, ByteVector>
        value;

    template <class T>
    T& Make() {
        if (T* const present = std::get_if<T>(&value)) {
            return *present;
        }
        return value.emplace<T>();
    }

    template <class T>
    const T& As(const char* expected) const {
        const T* const present = std::get_if<T>(&value);
        if (!present) {
            Vor::Throw(yERROR_PARAMETER, "The data tree holds no %s here.", expected);
        }
        return *present;
    }

    template <class T>
    T AsInteger() const {
        if (const auto* const number = std::get_if<std::int64_t>(&value); number && std::in_range<T>(*number)) {
            return static_cast<T>(*number);
        }
        if (const auto* const number = std::get_if<std::uint64_t>(&value); number && std::in_range<T>(*number)) {
            return static_cast<T>(*number);
        }
        Vor::Throw(yERROR_PARAMETER, "The data tree holds no %s here.", "integer of this range");
    }

    void Dump(std::string& out, bool indented, std::size_t depth) const;
    nlohmann::json ToJson() const;
};

namespace {

void BreakLine(std::string& out, bool indented, std::size_t depth) {
    if (indented) {
        out += '\n';
        out.append(depth * IndentStep, ' ');
    }
}

} // namespace

void VorDataTree::Data::Dump(std::string& out, bool indented, std::size_t depth) const {
    if (const auto* const object = std::get_if<Object>(&value)) {
        out += '{';
        for (std::size_t i = 0; i < object->members.size(); ++i) {
            out += i == 0 ? "" : ",";
            BreakLine(out, indented, depth + 1);
            out += Quoted(*object->members[i].first);
            out += indented ? ": " : ":";
            object->members[i].second->Dump(out, indented, depth + 1);
        }
        if (!object->members.empty()) {
            BreakLine(out, indented, depth);
        }
        out += '}';
    } else if (const auto* const array = std::get_if<Array>(&value)) {
        out += '[';
        for (std::size_t i = 0; i < array->size(); ++i) {
            out += i == 0 ? "" : ",";
            BreakLine(out, indented, depth + 1);
            (*array)[i]->Dump(out, indented, depth + 1);
        }
        if (!array->empty()) {
            BreakLine(out, indented, depth);
        }
        out += ']';
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
        out += Quoted(*text);
    } else {
        out += ToJson().dump();
    }
}

nlohmann::json VorDataTree::Data::ToJson() const {
    struct Converter {
        nlohmann::json operator()(std::monostate) const { return nullptr; }
        nlohmann::json operator()(const Object& object) const {
            auto json = nlohmann::json::object();
            for (const auto& [name, data] : object.members) {
                json[*name] = data->ToJson();
            }
            return json;
        }
        nlohmann::json operator()(const Array& array) const {
            auto json = nlohmann::json::array();
            for (const auto& data : array) {
                json.push_back(data->ToJson());
            }
            return json;
        }
        nlohmann::json operator()(const ByteVector& bytes) const { return bytes.ToBase64(); }
        nlohmann::json operator()(const std::string& text) const { return text; }
        nlohmann::json operator()(bool flag) const { return flag; }
        nlohmann::json operator()(std::int64_t number) const { return number; }
        nlohmann::json operator()(std::uint64_t number) const { return number; }
        nlohmann::json operator()(double number) const { return number; }
    };
    return std::visit(Converter(), value);
}

VorDataTree::VorDataTree()
    : data(std::make_shared<Data>()) {}

VorDataTree::VorDataTree(std::shared_ptr<Data> data)
    : data(std::move(data)) {}

VorDataTree::Kind VorDataTree::GetKind() const {
    return static_cast<Kind>(data->value.index());
}

VorDataTree VorDataTree::operator[](const std::string& name) {
    auto& object = data->Make<Data::Object>();
    const auto found = object.Find(name);
    return VorDataTree(found ? found : object.Add(name));
}

VorDataTree VorDataTree::operator[](const std::string& name) const {
    const auto* const object = std::get_if<Data::Object>(&data->value);
    const auto found = object ? object->Find(name) : nullptr;
    return found ? VorDataTree(found) : VorDataTree();
}

bool VorDataTree::Contains(const std::string& name) const {
    const auto* const object = std::get_if<Data::Object>(&data->value);
    return object && object->Find(name);
}

std::vector<std::string> VorDataTree::Names() const {
    std::vector<std::string> names;
    if (const auto* const object = std::get_if<Data::Object>(&data->value)) {
        for (const auto& [name, member] : object->members) {
            names.push_back(*name);
        }
    }
    return names;
}

void VorDataTree::MakeObject() {
    data->Make<Data::Object>();
}

void VorDataTree::MakeArray() {
    data->Make<Data::Array>();
}

std::size_t VorDataTree::Count() const {
    if (const auto* const object = std::get_if<Data::Object>(&data->value)) {
        return object->members.size();
    }
    const auto* const array = std::get_if<Data::Array>(&data->value);
    return array ? array->size() : 0;
}

VorDataTree VorDataTree::Append() {
    auto& array = data->Make<Data::Array>();
    array.push_back(std::make_shared<Data>());
    return VorDataTree(array.back());
}

VorDataTree VorDataTree::At(std::size_t index) const {
    const auto* const array = std::get_if<Data::Array>(&data->value);
    if (!array || index >= array->size()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    return VorDataTree((*array)[index]);
}

void VorDataTree::SetNull() {
    data->value.emplace<std::monostate>();
}

void VorDataTree::Set(bool value) {
    data->value = value;
}

void VorDataTree::Set(std::int64_t value) {
    data->value = value;
}

void VorDataTree::Set(std::uint64_t value) {
    data->value = value;
}

void VorDataTree::Set(double value) {
    data->value = value;
}

void VorDataTree::Set(const std::string& value) {
    data->value = value;
}

void VorDataTree::Set(const char* value) {
    data->value = std::string(value);
}

void VorDataTree::Set(const ByteVector& value) {
    data->value = value;
}

bool VorDataTree::AsBool() const {
    return data->As<bool>("boolean");
}

std::int64_t VorDataTree::AsInt64() const {
    return data->AsInteger<std::int64_t>();
}

std::uint64_t VorDataTree::AsUInt64() const {
    return data->AsInteger<std::uint64_t>();
}

double VorDataTree::AsDouble() const {
    return data->As<double>("real number");
}

const std::string& VorDataTree::AsText() const {
    return data->As<std::string>("text");
}

const ByteVector& VorDataTree::AsBinary() const {
    return data->As<ByteVector>("bytes");
}

std::string VorDataTree::Dump(bool indented) const {
    std::string out;
    data->Dump(out, indented, 0);
    return out;
}

nlohmann::json VorDataTree::ToJson() const {
    return data->ToJson();
}

VorDataTree VorDataTree::FromJson(const nlohmann::json& json) {
    VorDataTree tree;
    if (json.is_object()) {
        tree.MakeObject();
        for (const auto& [name, member] : json.items()) {
            tree.data->Make<Data::Object>().Add(name)->value = std::move(FromJson(member).data->value);
        }
    } else if (json.is_array()) {
        tree.MakeArray();
        for (const auto& element : json) {
            tree.data->Make<Data::Array>().push_back(FromJson(element).data);
        }
    } else if (json.is_boolean()) {
        tree.Set(json.get<bool>());
    } else if (json.is_number_unsigned()) {
        tree.Set(json.get<std::uint64_t>());
    } else if (json.is_number_integer()) {
        tree.Set(json.get<std::int64_t>());
    } else if (json.is_number_float()) {
        tree.Set(json.get<double>());
    } else if (json.is_string()) {
        tree.Set(json.get_ref<const std::string&>());
    }
    return tree;
}

} // namespace VorApi
