#include "Sensor/Http/HalDocument.h"

#include <algorithm>
#include <cstddef>
#include <map>

#include <nlohmann/json.hpp>

namespace Sensor::Http {

using VorApi::VorDataTree;

namespace {

/// Writes one object: members one after the other, with the commas between them.
class ObjectText {
public:
    explicit ObjectText(std::string& out)
        : out(out)
        , begin(out.size()) {
        out += '{';
    }

    /// The value is written next.
    void AddName(const std::string& name) {
        if (out.size() > begin + 1) {
            out += ',';
        }
        AppendQuoted(name);
        out += ':';
    }
    void Add(const std::string& name, const std::string& text) {
        AddName(name);
        AppendQuoted(text);
    }
    /// Adds the members of an object; nothing for a tree of another kind.
    void AddMembers(const VorDataTree& tree) {
        if (tree.IsObject() && tree.Count() > 0) {
            const bool isFirst = out.size() == begin + 1;
            out.erase(out.size() - (isFirst ? 1 : 0));
            const std::size_t object = out.size();
            tree.AppendTo(out, false);
            out[object] = isFirst ? '{' : ',';
            out.pop_back();
        }
    }

    void End() { out += '}'; }

private:
    void AppendQuoted(const std::string& text) {
        out += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

    std::string& out;
    const std::size_t begin;
};

const HalDocument::Link& LinkOf(const HalDocument::Link& link) {
    return link;
}

const HalDocument::Link& LinkOf(const HalDocument::Embedded& part) {
    return part.link;
}

/// Adds a member for each relation, in the order in which they come first; `append` writes one target.
template <class Target, class Append>
void AddRelations(ObjectText& object, std::string& out, const std::vector<Target>& targets, const Append& append) {
    std::map<std::string, std::vector<const Target*>> byRelation;
    for (const Target& target : targets) {
        byRelation[LinkOf(target).relation].push_back(&target);
    }
    for (const Target& target : targets) {
        const auto& same = byRelation[LinkOf(target).relation];
        if (same.front() != &target) {
            continue;
        }
        object.AddName(LinkOf(target).relation);
        const bool isArray = LinkOf(target).asArray || same.size() > 1;
        out += isArray ? "[" : "";
        for (const Target* const one : same) {
            out += one == same.front() ? "" : ",";
            append(*one);
        }
        out += isArray ? "]" : "";
    }
}

void AppendLink(std::string& out, const HalDocument::Link& link) {
    ObjectText object(out);
    object.Add("href", link.href);
    object.AddMembers(link.properties);
    object.End();
}

} // namespace

bool HalDocument::HasLink(const std::string& relation) const {
    return std::ranges::find(links, relation, &Link::relation) != links.end();
}

std::string HalDocument::Text(std::size_t expectedSize) const {
    std::string text;
    text.reserve(expectedSize);
    AppendTo(text);
    return text;
}

void HalDocument::AppendTo(std::string& out) const {
    ObjectText object(out);
    object.AddName("_links");
    ObjectText linked(out);
    linked.AddName("self");
    AppendLink(out, {"self", path});
    AddRelations(linked, out, links, [&](const Link& link) { AppendLink(out, link); });
    linked.End();
    object.AddMembers(members);
    if (!embedded.empty()) {
        object.AddName("_embedded");
        ObjectText parts(out);
        AddRelations(parts, out, embedded, [&](const Embedded& part) {
            if (part.document != nullptr) {
                part.document->AppendTo(out);
            } else {
                HalDocument{part.link.href, part.link.properties}.AppendTo(out);
            }
        });
        parts.End();
    }
    object.End();
}

} // namespace Sensor::Http
