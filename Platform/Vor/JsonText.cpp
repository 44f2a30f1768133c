#include "Vor/JsonText.h"

#include "Vor/Exception.h"

#include <algorithm>
#include <string>

#include <nlohmann/json.hpp>

namespace Vor {

namespace {

using Json = nlohmann::json;

[[noreturn]] void Refuse(std::string_view text, std::size_t offset, const std::string& reason) {
    const std::string_view before = text.substr(0, offset);
    const auto line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
    const std::size_t lineBreak = before.rfind('\n');
    const std::size_t column = lineBreak == std::string_view::npos ? offset + 1 : offset - lineBreak;
    Throw(yERROR_FORMAT, "Line %zu, column %zu: %s.", line, column, reason);
}

void CheckDepth(std::string_view text) {
    std::size_t depth = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                quoted = false;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == '[' || c == '{') {
            if (++depth > JsonMaxDepth) {
                Refuse(text, i, "nested more than " + std::to_string(JsonMaxDepth) + " levels deep");
            }
        } else if (c == ']' || c == '}') {
            depth -= depth > 0 ? 1 : 0;
        }
    }
}

/// The reason without the bytes that were read last, which can be of any size and aren't always text.
std::string Reason(const Json::exception& error) {
    std::string reason = error.what();
    reason.erase(0, reason.find("] ") + 2);
    if (error.id == 101) {
        reason.erase(0, reason.find(": ") + 2);
        reason.erase(std::min(reason.size(), reason.find("; last read: ")));
    } else {
        reason = "a number that is too large";
    }
    return reason;
}

/// Finds the place where the text is no JSON, and the reason.
class FailureFinder : public nlohmann::json_sax<Json> {
public:
    std::size_t position = 0;
    std::string reason;

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return true; }
    bool key(string_t&) override { return true; }
    bool end_object() override { return true; }
    bool start_array(std::size_t) override { return true; }
    bool end_array() override { return true; }
    bool parse_error(std::size_t read, const std::string&, const Json::exception& error) override {
        position = read == 0 ? 0 : read - 1;
        reason = Reason(error);
        return false;
    }
};

} // namespace

Json ParseJson(std::string_view text) {
    if (text.size() > JsonMaxSize) {
        Throw(yERROR_FORMAT, "%zu bytes of JSON are more than the %zu that are read.", text.size(), JsonMaxSize);
    }
    CheckDepth(text);
    try {
        return Json::parse(text.begin(), text.end());
    } catch (const Json::exception&) {
        FailureFinder finder;
        Json::sax_parse(text.begin(), text.end(), &finder);
        Refuse(text, std::min(finder.position, text.size()), finder.reason);
    }
}

Json ParseJson(const char* text, std::size_t size) {
    return ParseJson(std::string_view(text, size));
}

} // namespace Vor
