#pragma once

#include "Tests/Support/MarkdownTable.h"

#include <map>
#include <string>

#include <nlohmann/json.hpp>

namespace Tests {

/// By name: what the second column of a table has.
using Entries = std::map<std::string, std::string>;

/// The second column, without the quotation marks of code, of the table with these titles.
inline Entries Documented(const std::string& first, const std::string& second, const char* page = "Docs/resources.md") {
    Entries entries;
    for (const auto& [name, cells] : MarkdownTable(page, {first, second})) {
        entries[name] = WithoutTicks(cells.at(1));
    }
    return entries;
}

/// "integer", or "integer or null" for several.
inline std::string TypeOf(const nlohmann::json& type) {
    if (type.is_string()) {
        return type;
    }
    std::string text;
    for (const nlohmann::json& one : type) {
        text += (text.empty() ? "" : " or ") + one.get<std::string>();
    }
    return text;
}

/// The first element of an array with its schema, of which there is one for each element or one for all.
inline nlohmann::json FirstOf(const nlohmann::json& document, const char* name) {
    nlohmann::json element = document.at(name).at(0);
    const nlohmann::json& items = document.at("_schema").at("properties").at(name).at("items");
    element["_schema"] = items.is_array() ? items.at(0) : items;
    return element;
}

/// The members of a document with their types, read-only ones with a mark.
inline Entries Members(const nlohmann::json& document) {
    Entries entries;
    const nlohmann::json schema =
        document.value("_schema", nlohmann::json::object()).value("properties", nlohmann::json::object());
    for (const auto& [name, value] : document.items()) {
        if (name == "_schema") {
            continue;
        }
        const nlohmann::json keywords = schema.value(name, nlohmann::json::object());
        entries[name] = TypeOf(keywords.value("type", nlohmann::json(value.is_array() ? "array" : "object")));
        if (keywords.value("readOnly", false)) {
            entries[name] += ", read-only";
        }
    }
    return entries;
}

} // namespace Tests
