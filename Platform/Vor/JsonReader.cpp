#include "Vor/JsonReader.h"

#include "Vor/Exception.h"

#include <limits>
#include <utility>

namespace Vor::Properties::Internal {

namespace {

/// Bytes up to which a message quotes a text.
constexpr std::size_t MaxQuotedTextSize = 40;

std::string Describe(const nlohmann::json& json) {
    switch (json.type()) {
    case nlohmann::json::value_t::null:
        return "null";
    case nlohmann::json::value_t::boolean:
        return "a boolean";
    case nlohmann::json::value_t::number_integer:
    case nlohmann::json::value_t::number_unsigned:
        return "the integer " + json.dump();
    case nlohmann::json::value_t::number_float:
        return "a number that isn't an integer";
    case nlohmann::json::value_t::string: {
        const auto& text = json.get_ref<const std::string&>();
        return text.size() <= MaxQuotedTextSize ? "the text \"" + text + "\"" : "a text";
    }
    case nlohmann::json::value_t::array:
        return "an array";
    case nlohmann::json::value_t::object:
        return "an object";
    default:
        return "something else";
    }
}

} // namespace

std::string JsonPath::Text() const {
    if (!parent) {
        return "the document";
    }
    const std::string outer = parent->parent ? parent->Text() : std::string();
    if (!member) {
        return outer + "[" + std::to_string(index) + "]";
    }
    return outer.empty() ? *member : outer + "." + *member;
}

void RefuseJson(const JsonPath& path, const std::string& expected, const nlohmann::json& json) {
    Throw(yERROR_PARAMETER, "%s: expected %s but got %s.", path.Text(), expected, Describe(json));
}

template <class T>
T JsonReader::ReadInteger() const {
    if (json.is_number_unsigned()) {
        const auto value = json.get_ref<const nlohmann::json::number_unsigned_t&>();
        if (std::in_range<T>(value)) {
            return static_cast<T>(value);
        }
    } else if (json.is_number_integer()) {
        const auto value = json.get_ref<const nlohmann::json::number_integer_t&>();
        if (std::in_range<T>(value)) {
            return static_cast<T>(value);
        }
    }
    RefuseJson(path,
               "an integer from " + std::to_string(std::numeric_limits<T>::min()) + " to " +
                   std::to_string(std::numeric_limits<T>::max()),
               json);
}

template <class T, class Read>
std::vector<T> JsonReader::ReadList(Read read) const {
    if (!json.is_array()) {
        RefuseJson(path, "an array", json);
    }
    std::vector<T> values;
    values.reserve(json.size());
    for (std::size_t i = 0; i < json.size(); ++i) {
        const JsonPath itemPath{&path, nullptr, i};
        JsonReader item(json[i], itemPath);
        values.push_back(read(item));
    }
    return values;
}

bool JsonReader::ReadBool() {
    if (!json.is_boolean()) {
        RefuseJson(path, "a boolean", json);
    }
    return json.get_ref<const bool&>();
}

std::uint16_t JsonReader::ReadUInt16() {
    return ReadInteger<std::uint16_t>();
}

std::uint32_t JsonReader::ReadUInt32() {
    return ReadInteger<std::uint32_t>();
}

std::uint64_t JsonReader::ReadUInt64() {
    return ReadInteger<std::uint64_t>();
}

std::int64_t JsonReader::ReadInt64() {
    return ReadInteger<std::int64_t>();
}

std::int32_t JsonReader::ReadEnum() {
    return ReadInteger<std::int32_t>();
}

const std::string& JsonReader::ReadText() {
    if (!json.is_string()) {
        RefuseJson(path, "a text", json);
    }
    return json.get_ref<const std::string&>();
}

ByteVector JsonReader::ReadBytes() {
    ByteVector bytes;
    if (!json.is_string() || !ByteVector::FromBase64(json.get_ref<const std::string&>(), bytes)) {
        RefuseJson(path, "bytes as base64 text", json);
    }
    return bytes;
}

std::vector<std::string> JsonReader::ReadTextList() {
    return ReadList<std::string>([](JsonReader& item) { return item.ReadText(); });
}

std::vector<std::uint16_t> JsonReader::ReadUInt16List() {
    return ReadList<std::uint16_t>([](JsonReader& item) { return item.ReadUInt16(); });
}

std::vector<std::int32_t> JsonReader::ReadEnumList() {
    return ReadList<std::int32_t>([](JsonReader& item) { return item.ReadEnum(); });
}

} // namespace Vor::Properties::Internal
