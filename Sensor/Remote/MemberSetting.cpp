#include "Sensor/Remote/MemberSetting.h"

#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "Vor/Utf8.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Remote {

using nlohmann::json;

namespace {

/// The member of an object; null when there is none.
const json* Find(const json& object, const std::string& name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found == object.end() ? nullptr : &*found;
}

bool IsReadOnly(const json& schema) {
    const json* const value = Find(schema, "readOnly");
    return value != nullptr && value->is_boolean() && value->get<bool>();
}

std::string TypeOf(const json& schema) {
    const json* const type = Find(schema, "type");
    return type != nullptr && type->is_string() ? type->get<std::string>() : "";
}

std::optional<json> Parsed(const std::string& text) {
    try {
        return Vor::ParseJson(text);
    } catch (const Vor::Exception&) {
        return std::nullopt;
    }
}

bool IsQuoted(const std::string& text) {
    return text.size() > 1 && text.front() == '"' && text.back() == '"';
}

bool IsSameWord(const std::string& left, const std::string& right) {
    return std::ranges::equal(
        left, right, [](unsigned char one, unsigned char other) { return std::tolower(one) == std::tolower(other); });
}

/// The name of the value at `index` of an enumeration; empty when it has none.
std::string NameAt(const json& schema, std::size_t index) {
    const json* const names = Find(schema, "enumText");
    const bool hasName = names != nullptr && names->is_array() && index < names->size() && (*names)[index].is_string();
    return hasName ? (*names)[index].get<std::string>() : "";
}

std::optional<json> ValueOfEnumeration(const json& schema, const json& values, const std::string& text) {
    const std::optional<json> parsed = Parsed(text);
    for (const json& value : values) {
        if (value == json(text) || (parsed && value == *parsed)) {
            return value;
        }
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string name = NameAt(schema, i);
        if (!name.empty() && IsSameWord(name, text)) {
            return values[i];
        }
    }
    return std::nullopt;
}

/// "Point (0), Comma (1)".
std::string ListOfEnumeration(const json& schema, const json& values) {
    std::vector<std::string> list;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string value = values[i].is_string() ? values[i].get<std::string>() : values[i].dump();
        std::string item = NameAt(schema, i);
        if (item.empty()) {
            item = value;
        } else {
            item.append(" (").append(value).append(")");
        }
        list.push_back(std::move(item));
    }
    return Jobs::Listed(list);
}

/// The text as a value of the schema's type; nothing when it is none.
std::optional<json> ValueOfType(const std::string& type, const std::string& text) {
    if ((type == "string" || type == "binary") && !IsQuoted(text)) {
        return json(text);
    }
    std::optional<json> parsed = Parsed(text);
    if (!parsed) {
        return type.empty() ? std::optional<json>(text) : std::nullopt;
    }
    const bool isOfType = type == "string" || type == "binary" ? parsed->is_string()
                          : type == "boolean"                  ? parsed->is_boolean()
                          : type == "integer"                  ? parsed->is_number_integer()
                          : type == "number"                   ? parsed->is_number()
                          : type == "array"                    ? parsed->is_array()
                          : type == "object"                   ? parsed->is_object()
                                                               : true;
    return isOfType ? parsed : std::nullopt;
}

std::string DescriptionOf(const std::string& type, const json& schema) {
    const json* const minimum = Find(schema, "minimum");
    const json* const maximum = Find(schema, "maximum");
    const std::string from = minimum == nullptr ? "" : minimum->dump();
    const std::string to = maximum == nullptr ? "" : maximum->dump();
    const std::string range = !from.empty() && !to.empty() ? " from " + from + " to " + to
                              : !from.empty()              ? " of " + from + " or more"
                              : !to.empty()                ? " of " + to + " or less"
                                                           : "";
    return type == "boolean"   ? "true or false"
           : type == "integer" ? "an integer" + range
           : type == "number"  ? "a number" + range
           : type == "array"   ? "a list in JSON"
           : type == "object"  ? "an object in JSON"
                               : "a text, or one in quotation marks as in JSON";
}

} // namespace

MemberSetting MemberSetting::Parse(const std::string& text) {
    const std::size_t equals = text.find('=');
    MemberSetting setting{
        .text = text, .steps = {}, .value = equals == std::string::npos ? "" : text.substr(equals + 1)};
    std::string_view rest = std::string_view(text).substr(0, equals);
    bool isComplete = equals != std::string::npos;
    for (bool isLast = false; !isLast;) {
        const std::size_t dot = rest.find('.');
        isLast = dot == std::string_view::npos;
        setting.steps.emplace_back(rest.substr(0, dot));
        isComplete = isComplete && !setting.steps.back().empty();
        rest.remove_prefix(isLast ? rest.size() : dot + 1);
    }
    if (!Vor::IsUtf8(text)) {
        throw StartError("set " + text + ": it isn't text in UTF-8.");
    }
    if (!isComplete) {
        throw StartError("set " + text + ": expected MEMBER=VALUE, such as enabled=true or parameters.port=502.");
    }
    return setting;
}

std::string MemberSetting::Member() const {
    std::string member;
    for (const std::string& step : steps) {
        member += (member.empty() ? "" : ".") + step;
    }
    return member;
}

void MemberSetting::Refuse(const std::string& reason) const {
    throw StartError("set " + text + ": " + reason + ".");
}

json MemberSetting::ValueFor(const json& schema) const {
    const json* place = &schema;
    for (const std::string& step : steps) {
        if (TypeOf(*place) == "array") {
            Refuse("a list can only be set as a whole, in JSON");
        }
        const json* const members = Find(*place, "properties");
        const json* const next = members == nullptr ? nullptr : Find(*members, step);
        if (next == nullptr) {
            std::vector<std::string> names;
            if (members != nullptr && members->is_object()) {
                for (const auto& item : members->items()) {
                    names.push_back(item.key());
                }
            }
            Refuse("there is no member \"" + step + "\", known: " + Jobs::Listed(names));
        }
        if (IsReadOnly(*next)) {
            Refuse("\"" + step + "\" can only be read");
        }
        place = next;
    }
    const json* const values = Find(*place, "enum");
    if (values != nullptr && values->is_array() && !values->empty()) {
        const auto chosen = ValueOfEnumeration(*place, *values, value);
        if (!chosen) {
            Refuse("expected one of " + ListOfEnumeration(*place, *values));
        }
        return *chosen;
    }
    const auto parsed = ValueOfType(TypeOf(*place), value);
    if (!parsed) {
        Refuse("expected " + DescriptionOf(TypeOf(*place), *place));
    }
    return *parsed;
}

const json* MemberSetting::FindIn(const json& document) const {
    const json* place = &document;
    for (const std::string& step : steps) {
        place = place == nullptr ? nullptr : Find(*place, step);
    }
    return place;
}

json PatchOf(const std::vector<MemberSetting>& settings, const json& schema) {
    json patch = json::object();
    for (const MemberSetting& setting : settings) {
        for (const MemberSetting& other : settings) {
            const bool isWithin = other.steps.size() <= setting.steps.size() &&
                                  std::equal(other.steps.begin(), other.steps.end(), setting.steps.begin());
            if (&other != &setting && isWithin) {
                throw StartError("set " + setting.text + ": \"" + other.Member() + "\" is set twice.");
            }
        }
        json* place = &patch;
        for (const std::string& step : setting.steps) {
            place = &(*place)[step];
        }
        *place = setting.ValueFor(schema);
    }
    return patch;
}

} // namespace Sensor::Remote
