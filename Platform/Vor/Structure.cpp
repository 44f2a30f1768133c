#include "Vor/Structure.h"

#include "Vor/Exception.h"
#include "Vor/INodeVisitor.h"

#include <algorithm>

namespace Vor::Properties {

namespace {

/// From this many children on an index pays.
constexpr std::size_t ManyMembers = 16;

} // namespace

Structure::Structure(bool copied)
    : copiedByDefault(copied) {}

Structure::~Structure() = default;

void Structure::CheckValidationAndCollect(std::vector<std::string>& errors, unsigned long context) {
    for (const Internal::Member& member : members) {
        member.Target().CheckValidationAndCollect(errors, context);
    }
}

void Structure::RetrieveChangedParameters(std::vector<Node*>& changed) {
    for (const Internal::Member& member : members) {
        member.Target().RetrieveChangedParameters(changed);
    }
}

void Structure::ResetChangedParameters() {
    for (const Internal::Member& member : members) {
        member.Target().ResetChangedParameters();
    }
}

void Structure::CopyValues(const Node& other) {
    const auto& source = dynamic_cast<const Structure&>(other);
    for (std::size_t i = 0; i < members.size(); ++i) {
        const Internal::Member member = members[i];
        if (!member.IsCopied()) {
            continue;
        }
        const bool samePlace = i < source.members.size() && source.members[i].Key() == member.Key();
        const Node* const child = samePlace ? &source.members[i].Target() : source.FindKey(member.Key());
        if (child) {
            member.Target().CopyValues(*child);
        }
    }
    CopySchema(other);
}

void Structure::Accept(INodeVisitor& visitor) {
    visitor.Visit(*this);
}

void Structure::Accept(INodeVisitorConst& visitor) const {
    visitor.Visit(*this);
}

void Structure::Register(Internal::Name name, Node& child) {
    Register(name, child, copiedByDefault);
}

void Structure::Register(Internal::Name name, Node& child, bool copied) {
    const Internal::Member member(name, child, copied);
    const std::size_t position = PositionOf(name);
    if (position != NotFound) {
        members[position] = member;
        return;
    }
    if (members.empty()) {
        members.reserve(4);
    }
    members.push_back(member);
    if (index) {
        index->emplace(member.Text(), members.size() - 1);
    } else if (members.size() >= ManyMembers) {
        BuildIndex();
    }
}

void Structure::Deregister(Internal::Name name) {
    const std::size_t position = PositionOf(name);
    if (position == NotFound) {
        return;
    }
    members.erase(members.begin() + static_cast<std::ptrdiff_t>(position));
    if (index) {
        BuildIndex();
    }
}

Node& Structure::At(std::string_view name) const {
    Node* const child = Find(name);
    if (!child) {
        Throw(yERROR_NOT_FOUND, "There is no member '%s'.", std::string(name));
    }
    return *child;
}

Node* Structure::Find(std::string_view name) const {
    const std::size_t position = PositionOf(name);
    return position == NotFound ? nullptr : &members[position].Target();
}

Node* Structure::FindKey(Internal::Name name) const {
    const std::size_t position = PositionOf(name);
    return position == NotFound ? nullptr : &members[position].Target();
}

std::size_t Structure::PositionOf(std::string_view name) const {
    if (index) {
        const auto found = index->find(name);
        return found == index->end() ? NotFound : found->second;
    }
    const auto found =
        std::find_if(members.begin(), members.end(), [&](const auto& member) { return member.Text() == name; });
    return found == members.end() ? NotFound : static_cast<std::size_t>(found - members.begin());
}

std::size_t Structure::PositionOf(Internal::Name name) const {
    if (index) {
        return PositionOf(std::string_view(name.Text()));
    }
    const auto found =
        std::find_if(members.begin(), members.end(), [&](const auto& member) { return member.Key() == name; });
    return found == members.end() ? NotFound : static_cast<std::size_t>(found - members.begin());
}

void Structure::BuildIndex() {
    index = std::make_unique<Index>();
    for (std::size_t i = 0; i < members.size(); ++i) {
        index->emplace(members[i].Text(), i);
    }
}

} // namespace Vor::Properties
