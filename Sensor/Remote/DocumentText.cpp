#include "Sensor/Remote/DocumentText.h"

#include "Sensor/PrintableText.h"

#include <sstream>

#include <nlohmann/json.hpp>

namespace Sensor::Remote {

using nlohmann::json;

// Recursive: documents are parsed with a limit of their depth.
json WithoutLinks(const json& document) {
    if (document.is_object()) {
        json result = json::object();
        for (const auto& [name, value] : document.items()) {
            if (name != "_links") {
                result[name] = WithoutLinks(value);
            }
        }
        return result;
    }
    if (document.is_array()) {
        json result = json::array();
        for (const json& element : document) {
            result.push_back(WithoutLinks(element));
        }
        return result;
    }
    return document;
}

std::string PrintableJson(const json& document, int indent) {
    // Strings have no line ends in JSON, so the lines of both are the same.
    std::istringstream readable(document.dump(indent, ' ', false, json::error_handler_t::replace));
    std::istringstream ascii(document.dump(indent, ' ', true, json::error_handler_t::replace));
    std::string text;
    std::string line;
    std::string escaped;
    while (std::getline(readable, line) && std::getline(ascii, escaped)) {
        text += text.empty() ? "" : "\n";
        text += PrintableText(line) == line ? line : escaped;
    }
    return text;
}

} // namespace Sensor::Remote
