#pragma once

#include "VorApi/VorDataTree.h"

#include <string>
#include <string_view>
#include <vector>

namespace Sensor::Http {

/// The tree's own schemas as JSON Schema (draft 2020-12), written as JSON text, so that a large one occupies no more
/// memory than its text.
///
/// What JSON Schema has is written as it is: "type", "title", "description", "readOnly", "properties", "items", "enum",
/// "anyOf", the limits of numbers and of the length of lists, and a "format" that it knows. The type "binary" is a
/// string with "contentEncoding". A list of schemas in "items", one for each element, becomes "prefixItems". All other
/// keywords get the prefix "x-" unless they have it, such as "x-units" and "x-enumText". So do those whose value isn't
/// of the kind that JSON Schema expects, such as the limit of a text. A limit of more than 53 bits, which many readers
/// of JSON would round, becomes a text in "x-maximum" and the like. An empty "enum", which admits all values in the
/// tree, is left out.
class JsonSchema {
public:
    enum class Use {
        Document, ///< of one document: it has all properties, and as many elements as "items" has schemas
        Kind,     ///< of all documents alike: elements are like the first one
        Update    ///< of what a client sends: as Kind, and each property may be left out
    };

    static constexpr const char* Dialect = "https://json-schema.org/draft/2020-12/schema";

    /// A further member of a document.
    struct Member {
        std::string name;
        std::string_view schema; ///< JSON text
    };

    /// Appends the translation of a schema; "{}" for what is no object.
    static void Append(std::string& out, const VorApi::VorDataTree& schema, Use use);

    /// Appends the schema of a document whose parts have schemas of their own in members "_schema": one schema for the
    /// whole of it. What none of these describes is described by its kind. It has the members `more` besides.
    static void AppendOfDocument(std::string& out, const VorApi::VorDataTree& document,
                                 const std::vector<Member>& more);

    /// Appends a value without the members "_schema" in it.
    static void AppendWithoutSchemas(std::string& out, const VorApi::VorDataTree& value);

    /// The member that has a schema.
    static constexpr const char* Key = "_schema";
};

} // namespace Sensor::Http
