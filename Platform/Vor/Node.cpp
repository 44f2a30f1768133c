#include "Vor/Node.h"

#include "Vor/Structure.h"

#include <cstddef>
#include <limits>
#include <utility>

namespace Vor::Properties {

namespace {

Internal::Name TypeKey() {
    static const Internal::Name Key("type");
    return Key;
}

} // namespace

struct Node::Extras {
    Structure schema{true};
    bool isSchemaBuilt = false;
    Internal::HandlerList<Node&> changeHandlers;
};

Node::Node() = default;

Node::~Node() = default;

void Node::CheckValidationAndCollect(std::vector<std::string>&, unsigned long) {}

void Node::RetrieveChangedParameters(std::vector<Node*>&) {}

void Node::ResetChangedParameters() {}

void Node::CopyValues(const Node& other) {
    CopySchema(other);
}

void Node::SetWriteOnly(bool writeOnly) {
    this->writeOnly = writeOnly;
}

HandlerId Node::AddChangeHandler(std::function<void(Node&)> handler) {
    return MakeExtras().changeHandlers.Add(std::move(handler));
}

void Node::RemoveChangeHandler(HandlerId& id) {
    if (extras) {
        extras->changeHandlers.Remove(id);
    }
}

bool Node::HasChangeHandlers() const {
    return extras && extras->changeHandlers.Count() != 0;
}

bool Node::IsChanging() const {
    return extras && extras->changeHandlers.IsRunning();
}

void Node::RunChangeHandlers() {
    if (extras) {
        extras->changeHandlers.Run(*this);
    }
}

Structure& Node::Schema() {
    return BuildSchema();
}

const Structure& Node::Schema() const {
    return BuildSchema();
}

const Structure* Node::SchemaIfBuilt() const {
    return extras && extras->isSchemaBuilt ? &extras->schema : nullptr;
}

const Node* Node::LoneType() const {
    if (typeOffset == 0) {
        return nullptr;
    }
    return reinterpret_cast<const Node*>(reinterpret_cast<const char*>(this) + typeOffset);
}

const Internal::IKeywordSource* Node::LoneKeywords() const {
    if (sourceOffset == 0 || SchemaIfBuilt() != nullptr) {
        return nullptr;
    }
    return reinterpret_cast<const Internal::IKeywordSource*>(reinterpret_cast<const char*>(this) + sourceOffset);
}

void Node::SetKeywordSource(Internal::IKeywordSource& source) {
    sourceOffset =
        static_cast<std::int16_t>(reinterpret_cast<const char*>(&source) - reinterpret_cast<const char*>(this));
    if (SchemaIfBuilt() != nullptr) {
        source.RegisterKeywords();
    }
}

void Node::RegisterSchema(Internal::Name key, Node& keyword, bool copied) {
    if (SchemaIfBuilt() == nullptr && copied && key == TypeKey()) {
        const std::ptrdiff_t offset = reinterpret_cast<const char*>(&keyword) - reinterpret_cast<const char*>(this);
        if (offset > 0 && offset <= std::numeric_limits<std::int16_t>::max()) {
            typeOffset = static_cast<std::int16_t>(offset);
            return;
        }
    }
    BuildSchema().Register(key, keyword, copied);
}

void Node::DeregisterSchema(Internal::Name key) {
    if (SchemaIfBuilt() != nullptr || LoneKeywords() != nullptr) {
        BuildSchema().Deregister(key);
    } else if (key == TypeKey()) {
        typeOffset = 0;
    }
}

void Node::CopySchema(const Node& other) {
    if (&other == this) {
        return;
    }
    const Structure* const others = other.SchemaIfBuilt();
    const auto find = [&](Internal::Name key) -> const Node* {
        return others != nullptr ? others->FindKey(key) : key == TypeKey() ? other.LoneType() : nullptr;
    };
    if (const Node* const type = LoneType()) {
        if (const Node* const source = find(TypeKey())) {
            const_cast<Node*>(type)->CopyValues(*source);
        }
    }
    // Keyword sources copy their keywords themselves.
    if (LoneKeywords() != nullptr && others != nullptr && other.sourceOffset == 0) {
        BuildSchema();
    }
    if (SchemaIfBuilt() == nullptr) {
        return;
    }
    const auto& keywords = extras->schema.Members();
    // By index, since a handler that the copy runs may enable a keyword.
    for (std::size_t i = 0; i < keywords.size(); ++i) { // NOLINT(modernize-loop-convert)
        const Internal::Member keyword = keywords[i];
        if (!keyword.IsCopied()) {
            continue;
        }
        if (const Node* const source = find(keyword.Key())) {
            keyword.Target().CopyValues(*source);
        }
    }
}

Node::Extras& Node::MakeExtras() const {
    if (!extras) {
        extras = std::make_unique<Extras>();
    }
    return *extras;
}

Structure& Node::BuildSchema() const {
    Extras& made = MakeExtras();
    if (made.isSchemaBuilt) {
        return made.schema;
    }
    const auto* const keywords = LoneKeywords();
    made.isSchemaBuilt = true;
    made.schema.schemaOwner = this;
    if (const Node* const type = LoneType()) {
        made.schema.Register(TypeKey(), const_cast<Node&>(*type), true);
        typeOffset = 0;
    }
    if (keywords != nullptr) {
        const_cast<Internal::IKeywordSource*>(keywords)->RegisterKeywords();
    }
    return made.schema;
}

} // namespace Vor::Properties
