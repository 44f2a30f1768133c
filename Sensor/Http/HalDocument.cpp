#include "Sensor/Http/HalDocument.h"

#include "Sensor/Http/JsonSchema.h"
#include "Sensor/Http/ObjectText.h"

#include <algorithm>
#include <map>

namespace Sensor::Http {

namespace {

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

void HalDocument::AddMembersAndJsonSchema(ObjectText& object, std::string& out) const {
    for (const std::string& name : members.Names()) {
        if (name != JsonSchema::Key) {
            object.AddName(name);
            JsonSchema::AppendWithoutSchemas(out, members[name]);
        }
    }
    std::vector<JsonSchema::Member> more{{"_links", LinksSchema}, {JsonSchema::Key, R"({"type":"object"})"}};
    if (!embedded.empty()) {
        more.push_back({"_embedded", EmbeddedSchema});
    }
    object.AddName(JsonSchema::Key);
    JsonSchema::AppendOfDocument(out, members, more);
}

void HalDocument::AppendTo(std::string& out) const {
    ObjectText object(out);
    object.AddName("_links");
    ObjectText linked(out);
    linked.AddName("self");
    AppendLink(out, {"self", path});
    AddRelations(linked, out, links, [&](const Link& link) { AppendLink(out, link); });
    linked.End();
    if (hasJsonSchema) {
        AddMembersAndJsonSchema(object, out);
    } else {
        object.AddMembers(members);
    }
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
