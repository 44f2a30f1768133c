#include "Sensor/Http/JsonSchema.h"

#include "Sensor/Http/ObjectText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace Sensor::Http {

using VorApi::VorDataTree;
using Kind = VorDataTree::Kind;
using Use = JsonSchema::Use;

namespace {

constexpr const char* BinaryType = "binary";
constexpr const char* Base64 = "base64";
/// The greatest integer up to which a double has all.
constexpr std::int64_t MaxExact = (std::int64_t{1} << 53) - 1;

constexpr std::array Types{"array", "boolean", "integer", "null", "number", "object", "string"};
constexpr std::array Limits{"minimum", "maximum", "exclusiveMinimum", "exclusiveMaximum"};
constexpr std::array Formats{"date",         "date-time", "duration", "email", "hostname",      "ipv4",         "ipv6",
                             "json-pointer", "regex",     "time",     "uri",   "uri-reference", "uri-template", "uuid"};

bool IsOneOf(const auto& list, const std::string& text) {
    return std::ranges::find(list, text) != std::end(list);
}

bool IsText(const VorDataTree& value) {
    return value.GetKind() == Kind::Text;
}

bool IsInteger(const VorDataTree& value) {
    return value.GetKind() == Kind::Int64 || value.GetKind() == Kind::UInt64;
}

/// Whether it is an integer that doubles can't tell from its neighbours.
bool IsTooLong(const VorDataTree& value) {
    switch (value.GetKind()) {
    case Kind::Int64:
        return value.AsInt64() < -MaxExact || value.AsInt64() > MaxExact;
    case Kind::UInt64:
        return value.AsUInt64() > static_cast<std::uint64_t>(MaxExact);
    default:
        return false;
    }
}

bool IsLimit(const VorDataTree& value) {
    return (IsInteger(value) && !IsTooLong(value)) ||
           (value.GetKind() == Kind::Double && std::isfinite(value.AsDouble()));
}

bool IsCount(const VorDataTree& value) {
    return IsLimit(value) && IsInteger(value) && value.AsInt64() >= 0;
}

bool IsType(const VorDataTree& value) {
    return IsText(value) && (value.AsText() == BinaryType || IsOneOf(Types, value.AsText()));
}

bool IsTypeList(const VorDataTree& value) {
    if (value.GetKind() != Kind::Array || value.Count() == 0) {
        return false;
    }
    for (std::size_t i = 0; i < value.Count(); ++i) {
        if (!IsType(value.At(i))) {
            return false;
        }
    }
    return true;
}

/// Calls `append(element)` for each element of an array.
void AppendList(std::string& out, const VorDataTree& array, const auto& append) {
    out += '[';
    for (std::size_t i = 0; i < array.Count(); ++i) {
        out += i == 0 ? "" : ",";
        append(array.At(i));
    }
    out += ']';
}

void AppendTexts(std::string& out, const auto& texts) {
    const char* separator = "[";
    for (const std::string& text : texts) {
        out += separator + Quoted(text);
        separator = ",";
    }
    out += ']';
}

/// Writes the keywords of one schema.
class SchemaText {
public:
    SchemaText(std::string& out, Use use)
        : out(out)
        , use(use)
        , object(out) {}

    void Add(const std::string& name, const VorDataTree& value) {
        if (name == "type" && (IsType(value) || IsTypeList(value))) {
            AddType(value);
        } else if (name == "properties" && value.IsObject()) {
            AddProperties(value);
        } else if (name == "items" && (value.IsObject() || value.GetKind() == Kind::Array)) {
            AddItems(value);
        } else if (name == "anyOf" && value.GetKind() == Kind::Array && value.Count() > 0) {
            object.AddName(name);
            AppendList(out, value, [&](const VorDataTree& one) { JsonSchema::Append(out, one, use); });
        } else if (name == "enum" && value.GetKind() == Kind::Array) {
            if (value.Count() > 0) {
                object.AddTree(name, value);
            }
        } else if (IsOneOf(Limits, name) && IsTooLong(value)) {
            object.Add("x-" + name, value.Dump(false));
        } else if (IsAsItIs(name, value)) {
            object.AddTree(name, value);
        } else {
            object.AddTree("x-" + name, value);
        }
    }

    void AddType(const VorDataTree& type) {
        std::vector<std::string> types;
        bool isBinary = false;
        const auto add = [&](const std::string& text) {
            isBinary = isBinary || text == BinaryType;
            if (const std::string known = text == BinaryType ? "string" : text; !IsOneOf(types, known)) {
                types.push_back(known);
            }
        };
        if (IsText(type)) {
            add(type.AsText());
            object.Add("type", types.front());
        } else {
            for (std::size_t i = 0; i < type.Count(); ++i) {
                add(type.At(i).AsText());
            }
            object.AddName("type");
            AppendTexts(out, types);
        }
        if (isBinary) {
            object.Add("contentEncoding", Base64);
        }
    }

    void AddRequired(const std::vector<std::string>& names) {
        if (!names.empty()) {
            object.AddName("required");
            AppendTexts(out, names);
        }
    }

    ObjectText& Object() { return object; }
    void End() { object.End(); }

private:
    static bool IsAsItIs(const std::string& name, const VorDataTree& value) {
        if (name == "title" || name == "description") {
            return IsText(value);
        }
        if (name == "readOnly") {
            return value.GetKind() == Kind::Bool;
        }
        if (name == "minItems" || name == "maxItems") {
            return IsCount(value);
        }
        if (name == "format") {
            return IsText(value) && IsOneOf(Formats, value.AsText());
        }
        return IsOneOf(Limits, name) ? IsLimit(value) : name.starts_with("x-");
    }

    void AddProperties(const VorDataTree& properties) {
        object.AddName("properties");
        ObjectText members(out);
        const std::vector<std::string> names = properties.Names();
        for (const std::string& name : names) {
            members.AddName(name);
            JsonSchema::Append(out, properties[name], use);
        }
        members.End();
        if (use != Use::Update) {
            AddRequired(names);
        }
    }

    void AddItems(const VorDataTree& items) {
        if (items.IsObject()) {
            object.AddName("items");
            JsonSchema::Append(out, items, use);
        } else if (items.Count() > 0 && use == Use::Document) {
            object.AddName("prefixItems");
            AppendList(out, items, [&](const VorDataTree& one) { JsonSchema::Append(out, one, use); });
        } else if (items.Count() > 0) {
            object.AddName("items");
            JsonSchema::Append(out, items.At(0), use);
        }
    }

    std::string& out;
    const Use use;
    ObjectText object;
};

const char* TypeOf(Kind kind) {
    switch (kind) {
    case Kind::Null:
        return "null";
    case Kind::Object:
        return "object";
    case Kind::Array:
        return "array";
    case Kind::Bool:
        return "boolean";
    case Kind::Int64:
    case Kind::UInt64:
        return "integer";
    case Kind::Double:
        return "number";
    case Kind::Text:
        return "string";
    case Kind::Binary:
        break;
    }
    return BinaryType;
}

void AppendPart(std::string& out, const VorDataTree& part);

/// Adds the keywords of an object, which may have a schema of some of its members.
void AddObject(SchemaText& text, std::string& out, const VorDataTree& value,
               const std::vector<JsonSchema::Member>& more) {
    const VorDataTree schema = value[JsonSchema::Key];
    const VorDataTree properties = schema["properties"];
    std::vector<std::string> names = value.Names();
    std::erase(names, JsonSchema::Key);
    text.Object().Add("type", "object");
    text.Object().AddName("properties");
    ObjectText members(out);
    for (const JsonSchema::Member& member : more) {
        members.AddJson(member.name, member.schema);
    }
    for (const std::string& name : properties.Names()) {
        members.AddName(name);
        JsonSchema::Append(out, properties[name], Use::Document);
    }
    for (const std::string& name : names) {
        if (!properties.Contains(name)) {
            members.AddName(name);
            AppendPart(out, value[name]);
        }
    }
    members.End();
    for (const JsonSchema::Member& member : more) {
        names.push_back(member.name);
    }
    text.AddRequired(names);
    for (const std::string& name : schema.Names()) {
        if (name != "type" && name != "properties") {
            text.Add(name, schema[name]);
        }
    }
}

/// Appends the schema of a part of a document.
void AppendPart(std::string& out, const VorDataTree& part) {
    SchemaText text(out, Use::Document);
    if (part.IsObject()) {
        AddObject(text, out, part, {});
    } else {
        VorDataTree type;
        type.Set(TypeOf(part.GetKind()));
        text.AddType(type);
        if (part.Count() > 0) {
            text.Object().AddName("prefixItems");
            AppendList(out, part, [&](const VorDataTree& element) { AppendPart(out, element); });
        }
    }
    text.End();
}

} // namespace

void JsonSchema::Append(std::string& out, const VorDataTree& schema, Use use) {
    SchemaText text(out, use);
    for (const std::string& name : schema.Names()) {
        text.Add(name, schema[name]);
    }
    text.End();
}

void JsonSchema::AppendOfDocument(std::string& out, const VorDataTree& document, const std::vector<Member>& more) {
    SchemaText text(out, Use::Document);
    text.Object().Add("$schema", Dialect);
    AddObject(text, out, document, more);
    text.End();
}

void JsonSchema::AppendWithoutSchemas(std::string& out, const VorDataTree& value) {
    if (value.IsObject()) {
        ObjectText object(out);
        for (const std::string& name : value.Names()) {
            if (name != Key) {
                object.AddName(name);
                AppendWithoutSchemas(out, value[name]);
            }
        }
        object.End();
    } else if (value.GetKind() == Kind::Array) {
        AppendList(out, value, [&](const VorDataTree& element) { AppendWithoutSchemas(out, element); });
    } else {
        value.AppendTo(out, false);
    }
}

} // namespace Sensor::Http
