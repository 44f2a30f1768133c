#pragma once

#include "VorApi/VorDataTree.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Sensor::Http {

class ObjectText;

/// A document with its relations to others, as hypertext (draft-kelly-json-hal-11).
struct HalDocument {
    struct Link {
        std::string relation;
        std::string href;
        bool asArray = false;
        VorApi::VorDataTree properties = {}; ///< an object, or null
    };
    struct Embedded {
        Link link;
        std::shared_ptr<const HalDocument> document = nullptr; ///< null for one that isn't expanded
    };

    std::string path;
    VorApi::VorDataTree members; ///< null or of another kind than an object for none
    std::vector<Link> links = {};
    std::vector<Embedded> embedded = {};
    /// Whether the text has one schema for all of the document, as JSON Schema, instead of those in the members.
    bool hasJsonSchema = false;

    /// The JSON Schemas of "_links" and "_embedded".
    static constexpr std::string_view LinksSchema =
        R"({"type":"object","title":"Links, by relation","readOnly":true,"properties":{"self":{"type":"object",)"
        R"("properties":{"href":{"type":"string"}},"required":["href"]}},"required":["self"],"additionalProperties":)"
        R"({"type":["object","array"],"properties":{"href":{"type":"string"},"name":{"type":"string"},)"
        R"("templated":{"type":"boolean"}},"required":["href"],"items":{"type":"object","properties":)"
        R"({"href":{"type":"string"},"name":{"type":"string"},"templated":{"type":"boolean"}},"required":["href"]}}})";
    static constexpr std::string_view EmbeddedSchema =
        R"({"type":"object","title":"Documents, by relation","readOnly":true,"additionalProperties":)"
        R"({"type":["object","array"],"properties":{"_links":{"type":"object"}},"required":["_links"],)"
        R"("items":{"type":"object","properties":{"_links":{"type":"object"}},"required":["_links"]}}})";

    bool HasLink(const std::string& relation) const;
    /// JSON with "_links", of which "self" is the first, the members and "_embedded". A relation that is there several
    /// times is an array. A text of at most `expectedSize` bytes doesn't move in memory, where it would occupy up to
    /// three times its size meanwhile.
    std::string Text(std::size_t expectedSize = 0) const;
    void AppendTo(std::string& out) const;

private:
    void AddMembersAndJsonSchema(ObjectText& object, std::string& out) const;
};

} // namespace Sensor::Http
