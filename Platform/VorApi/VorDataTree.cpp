#include "VorApi/VorDataTree.h"

#include "Vor/Exception.h"
#include "Vor/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

namespace VorApi {

namespace {

using Vor::Properties::ByteVector;

constexpr int IndentStep = 4;

/// Whether JSON has the text as it is, in quotation marks.
bool IsPlain(std::string_view text) {
    bool hasSpecial = false;
    bool isAscii = true;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        hasSpecial |= code < 0x20 || code == '"' || code == '\\';
        isAscii &= code < 0x80;
    }
    return !hasSpecial && (isAscii || Vor::IsUtf8(text));
}

std::string Quoted(std::string_view text) {
    return IsPlain(text)
               ? '"' + std::string(text) + '"'
               : nlohmann::json(std::string(text)).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

/// The names of a tree's members, each once, with its form in JSON.
using NameTable = std::unordered_map<std::string, std::string>;
using Name = NameTable::value_type;

} // namespace

/// Memory that is released as a whole.
class VorDataTree::Memory {
public:
    /// Aligned if whatever is allocated has the alignment of `T`, at most that of a pointer.
    template <class T>
    T* Allocate(std::size_t count) {
        static_assert(alignof(T) <= alignof(void*));
        const std::size_t size = count * sizeof(T);
        if (size > left) {
            left = std::max(size, std::clamp(total, std::size_t{256}, std::size_t{256} * 1024));
            blocks.push_back(std::make_unique_for_overwrite<std::byte[]>(left));
            next = blocks.back().get();
            total += left;
        }
        void* const start = std::exchange(next, next + size);
        left -= size;
        return static_cast<T*>(start);
    }

    /// Adds room for one more `T` if it is right after `end`.
    template <class T>
    bool Extend(const T* end) {
        if (static_cast<const void*>(end) != next || left < sizeof(T)) {
            return false;
        }
        Allocate<T>(1);
        return true;
    }

    std::size_t Total() const { return total; }

private:
    std::vector<std::unique_ptr<std::byte[]>> blocks;
    std::byte* next = nullptr;
    std::size_t left = 0;
    std::size_t total = 0;
};

/// Needs no destructor, so a tree of any depth is released at once.
struct VorDataTree::Node {
    /// Consecutive members or elements.
    struct Chunk {
        Chunk* next;
        Node* nodes;
        std::size_t count;
        std::size_t capacity;
    };
    /// Chunks of about doubling size. None is moved, so nodes keep their places.
    struct List {
        Chunk* first = nullptr;
        Chunk* last = nullptr;

        std::size_t Count() const {
            std::size_t count = 0;
            for (const Chunk* chunk = first; chunk != nullptr; chunk = chunk->next) {
                count += chunk->count;
            }
            return count;
        }

        template <class Visit>
        void ForEach(const Visit& visit) const {
            for (const Chunk* chunk = first; chunk != nullptr; chunk = chunk->next) {
                std::ranges::for_each(std::span(chunk->nodes, chunk->count), visit);
            }
        }
    };
    struct Object : List {};
    struct Array : List {};
    struct Text {
        std::string_view characters;
    };
    struct Binary {
        std::string_view bytes;

        ByteVector Copy() const { return {bytes.data(), bytes.size()}; }
    };

    template <class T>
    T& Make() {
        T* const present = std::get_if<T>(&value);
        return present ? *present : value.emplace<T>();
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

    const List* Children() const {
        if (const auto* const object = std::get_if<Object>(&value)) {
            return object;
        }
        return std::get_if<Array>(&value);
    }

    nlohmann::json ToJson() const;

    /// In the order of Kind.
    std::variant<std::monostate, Object, Array, bool, std::int64_t, std::uint64_t, double, Text, Binary> value;
    const Name* name = nullptr; ///< of a member
};

/// All nodes of a tree. They have no pointers of their own to it.
class VorDataTree::Storage {
public:
    Node& Root() { return root; }
    std::size_t Size() const { return sizeof(Storage) + nodes.Total() + texts.Total(); }

    Node* Find(const Node::Object& object, const std::string& name) const {
        const auto known = names.find(name);
        return known == names.end() ? nullptr : Find(object, *known);
    }

    Node& Member(Node::Object& object, const std::string& name) {
        const Name& known = Intern(name);
        Node* const present = Find(object, known);
        return present ? *present : Add(object, known);
    }

    /// The object has no such member.
    Node& Add(Node::Object& object, const std::string& name) { return Add(object, Intern(name)); }

    Node& Append(Node::List& list) {
        if (list.last == nullptr || list.last->count == list.last->capacity) {
            Grow(list);
        }
        return *std::construct_at(list.last->nodes + list.last->count++);
    }

    std::string_view Copy(const void* bytes, std::size_t size) {
        char* const copy = texts.Allocate<char>(size);
        std::copy_n(static_cast<const char*>(bytes), size, copy);
        return {copy, size};
    }

    void Assign(Node& node, const nlohmann::json& json);

private:
    /// So many members of an object are searched one by one, all further ones are in `index`.
    static constexpr std::size_t Searched = 32;

    const Name& Intern(const std::string& name) {
        const auto [known, isNew] = names.try_emplace(name);
        if (isNew) {
            known->second = Quoted(name);
        }
        return *known;
    }

    Node* Find(const Node::Object& object, const Name& name) const {
        std::size_t searched = 0;
        for (const Node::Chunk* chunk = object.first; chunk != nullptr; chunk = chunk->next) {
            for (Node& node : std::span(chunk->nodes, chunk->count)) {
                if (node.name == &name) {
                    return &node;
                }
                if (++searched == Searched) {
                    return FindFurther(object, name);
                }
            }
        }
        return nullptr;
    }

    Node* FindFurther(const Node::Object& object, const Name& name) const {
        const auto further = index.find(object.first);
        if (further == index.end()) {
            return nullptr;
        }
        const auto found = further->second.find(&name);
        return found == further->second.end() ? nullptr : found->second;
    }

    Node& Add(Node::Object& object, const Name& name) {
        Node& added = Append(object);
        added.name = &name;
        if (object.Count() > Searched) {
            index[object.first].emplace(&name, &added);
        }
        return added;
    }

    /// Most lists get nothing but values without nodes of their own, one after the other, and so fit exactly.
    void Grow(Node::List& list) {
        if (list.last != nullptr && nodes.Extend(list.last->nodes + list.last->capacity)) {
            ++list.last->capacity;
            return;
        }
        const std::size_t capacity = list.last == nullptr ? 1 : 2 * list.last->capacity + 1;
        auto* const place = nodes.Allocate<Node::Chunk>(1);
        auto* const chunk = std::construct_at(place, Node::Chunk{nullptr, nodes.Allocate<Node>(capacity), 0, capacity});
        (list.last == nullptr ? list.first : list.last->next) = chunk;
        list.last = chunk;
    }

    static_assert(std::is_trivially_destructible_v<Node> && std::is_trivially_destructible_v<Node::Chunk>);

    Node root;
    Memory nodes;
    Memory texts;
    NameTable names;
    /// By the first chunk of an object, which isn't used again.
    std::unordered_map<const Node::Chunk*, std::unordered_map<const Name*, Node*>> index;
};

void VorDataTree::Storage::Assign(Node& node, const nlohmann::json& json) {
    if (json.is_object()) {
        auto& object = node.Make<Node::Object>();
        for (const auto& [name, member] : json.items()) {
            Assign(Add(object, name), member);
        }
    } else if (json.is_array()) {
        auto& array = node.Make<Node::Array>();
        for (const auto& element : json) {
            Assign(Append(array), element);
        }
    } else if (json.is_boolean()) {
        node.value = json.get<bool>();
    } else if (json.is_number_unsigned()) {
        node.value = json.get<std::uint64_t>();
    } else if (json.is_number_integer()) {
        node.value = json.get<std::int64_t>();
    } else if (json.is_number_float()) {
        node.value = json.get<double>();
    } else if (json.is_string()) {
        const auto& text = json.get_ref<const std::string&>();
        node.value = Node::Text{Copy(text.data(), text.size())};
    }
}

nlohmann::json VorDataTree::Node::ToJson() const {
    struct Converter {
        nlohmann::json operator()(std::monostate) const { return nullptr; }
        nlohmann::json operator()(const Object& object) const {
            auto json = nlohmann::json::object();
            object.ForEach([&](const Node& member) { json[member.name->first] = member.ToJson(); });
            return json;
        }
        nlohmann::json operator()(const Array& array) const {
            auto json = nlohmann::json::array();
            array.ForEach([&](const Node& element) { json.push_back(element.ToJson()); });
            return json;
        }
        nlohmann::json operator()(const Binary& binary) const { return binary.Copy().ToBase64(); }
        nlohmann::json operator()(const Text& text) const { return std::string(text.characters); }
        nlohmann::json operator()(bool flag) const { return flag; }
        nlohmann::json operator()(std::int64_t number) const { return number; }
        nlohmann::json operator()(std::uint64_t number) const { return number; }
        nlohmann::json operator()(double number) const { return number; }
    };
    return std::visit(Converter(), value);
}

/// Writes nodes as JSON text, or counts its bytes.
class VorDataTree::Writer {
public:
    /// Without `out` it counts only.
    Writer(std::string* out, bool indented)
        : out(out)
        , indented(indented) {}

    void Write(const Node& node) { std::visit(*this, node.value); }
    std::size_t Size() const { return size; }

    void operator()(std::monostate) { Add("null"); }
    void operator()(const Node::Object& object) {
        WriteList('{', object, '}', [this](const Node& member) {
            Add(member.name->second);
            Add(indented ? ": " : ":");
        });
    }
    void operator()(const Node::Array& array) {
        WriteList('[', array, ']', [](const Node&) {});
    }
    void operator()(const Node::Text& text) {
        if (IsPlain(text.characters)) {
            Add("\"");
            Add(text.characters);
            Add("\"");
        } else {
            Add(Quoted(text.characters));
        }
    }
    void operator()(const Node::Binary& binary) { Add('"' + binary.Copy().ToBase64() + '"'); }
    void operator()(bool flag) { Add(flag ? "true" : "false"); }
    void operator()(std::int64_t number) { AddInteger(number); }
    void operator()(std::uint64_t number) { AddInteger(number); }
    void operator()(double number) { Add(nlohmann::json(number).dump()); }

private:
    void Add(std::string_view text) {
        size += text.size();
        if (out != nullptr) {
            out->append(text);
        }
    }

    template <class T>
    void AddInteger(T number) {
        std::array<char, 24> digits;
        Add({digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr});
    }

    template <class WriteName>
    void WriteList(char open, const Node::List& list, char close, const WriteName& writeName) {
        Add({&open, 1});
        ++depth;
        bool isFirst = true;
        list.ForEach([&](const Node& node) {
            if (!std::exchange(isFirst, false)) {
                Add(",");
            }
            BreakLine();
            writeName(node);
            Write(node);
        });
        --depth;
        if (!isFirst) {
            BreakLine();
        }
        Add({&close, 1});
    }

    void BreakLine() {
        if (indented) {
            Add("\n" + std::string(depth * IndentStep, ' '));
        }
    }

    std::string* out;
    bool indented;
    std::size_t size = 0;
    std::size_t depth = 0;
};

VorDataTree::VorDataTree()
    : storage(std::make_shared<Storage>())
    , node(&storage->Root()) {}

VorDataTree::VorDataTree(std::shared_ptr<Storage> storage, Node& node)
    : storage(std::move(storage))
    , node(&node) {}

VorDataTree::Kind VorDataTree::GetKind() const {
    return static_cast<Kind>(node->value.index());
}

VorDataTree VorDataTree::operator[](const std::string& name) {
    return {storage, storage->Member(node->Make<Node::Object>(), name)};
}

VorDataTree VorDataTree::operator[](const std::string& name) const {
    const auto* const object = std::get_if<Node::Object>(&node->value);
    Node* const found = object ? storage->Find(*object, name) : nullptr;
    return found ? VorDataTree(storage, *found) : VorDataTree();
}

bool VorDataTree::Contains(const std::string& name) const {
    const auto* const object = std::get_if<Node::Object>(&node->value);
    return object && storage->Find(*object, name);
}

std::vector<std::string> VorDataTree::Names() const {
    std::vector<std::string> names;
    if (const auto* const object = std::get_if<Node::Object>(&node->value)) {
        object->ForEach([&](const Node& member) { names.push_back(member.name->first); });
    }
    return names;
}

void VorDataTree::MakeObject() {
    node->Make<Node::Object>();
}

void VorDataTree::MakeArray() {
    node->Make<Node::Array>();
}

std::size_t VorDataTree::Count() const {
    const Node::List* const list = node->Children();
    return list ? list->Count() : 0;
}

VorDataTree VorDataTree::Append() {
    return {storage, storage->Append(node->Make<Node::Array>())};
}

VorDataTree VorDataTree::At(std::size_t index) const {
    if (const auto* const array = std::get_if<Node::Array>(&node->value)) {
        for (const Node::Chunk* chunk = array->first; chunk != nullptr; chunk = chunk->next) {
            if (index < chunk->count) {
                return {storage, chunk->nodes[index]};
            }
            index -= chunk->count;
        }
    }
    Vor::Throw(yERROR_NOT_FOUND);
}

void VorDataTree::SetNull() {
    node->value = std::monostate();
}

void VorDataTree::Set(bool value) {
    node->value = value;
}

void VorDataTree::Set(std::int64_t value) {
    node->value = value;
}

void VorDataTree::Set(std::uint64_t value) {
    node->value = value;
}

void VorDataTree::Set(double value) {
    node->value = value;
}

void VorDataTree::Set(const std::string& value) {
    node->value = Node::Text{storage->Copy(value.data(), value.size())};
}

void VorDataTree::Set(const char* value) {
    const std::string_view text = value;
    node->value = Node::Text{storage->Copy(text.data(), text.size())};
}

void VorDataTree::Set(const ByteVector& value) {
    node->value = Node::Binary{storage->Copy(value.Data(), value.Size())};
}

bool VorDataTree::AsBool() const {
    return node->As<bool>("boolean");
}

std::int64_t VorDataTree::AsInt64() const {
    return node->AsInteger<std::int64_t>();
}

std::uint64_t VorDataTree::AsUInt64() const {
    return node->AsInteger<std::uint64_t>();
}

double VorDataTree::AsDouble() const {
    return node->As<double>("real number");
}

std::string VorDataTree::AsText() const {
    return std::string(node->As<Node::Text>("text").characters);
}

ByteVector VorDataTree::AsBinary() const {
    return node->As<Node::Binary>("bytes").Copy();
}

std::string VorDataTree::Dump(bool indented) const {
    std::string out;
    AppendTo(out, indented);
    return out;
}

void VorDataTree::AppendTo(std::string& out, bool indented) const {
    Writer counter(nullptr, indented);
    counter.Write(*node);
    out.reserve(out.size() + counter.Size());
    Writer(&out, indented).Write(*node);
}

std::size_t VorDataTree::Size() const {
    return storage->Size();
}

nlohmann::json VorDataTree::ToJson() const {
    return node->ToJson();
}

VorDataTree VorDataTree::FromJson(const nlohmann::json& json) {
    VorDataTree tree;
    tree.storage->Assign(*tree.node, json);
    return tree;
}

} // namespace VorApi
