#include "Sensor/Http/RequestTarget.h"

#include "Sensor/Http/FieldList.h"
#include "Vor/Exception.h"
#include "VorApi/Path.h"

#include <algorithm>

namespace Sensor::Http {

namespace {

constexpr std::string_view UrlBegin = "http://";

bool IsVisibleAscii(char c) {
    return c > 0x20 && c < 0x7F;
}

/// Decodes a name or a value of a query, as forms write them (URL standard, 5.1).
std::string DecodeQuery(std::string_view text) {
    std::string spaced(text);
    std::ranges::replace(spaced, '+', ' ');
    return VorApi::Path::Decode(spaced);
}

} // namespace

std::optional<RequestTarget> RequestTarget::Parse(std::string_view target) {
    RequestTarget parsed;
    if (LowerCase(target.substr(0, UrlBegin.size())) == UrlBegin) {
        target.remove_prefix(UrlBegin.size());
        parsed.authority = target.substr(0, target.find_first_of("/?"));
        target.remove_prefix(parsed.authority->size());
    }
    const bool hasPath = target.starts_with('/') || (parsed.authority && (target.empty() || target.front() == '?'));
    if (!hasPath || !std::ranges::all_of(target, IsVisibleAscii) || target.find('#') != std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t queryMark = target.find('?');
    parsed.path = queryMark == 0 || target.empty() ? "/" : target.substr(0, queryMark);
    std::string_view rest = queryMark == std::string_view::npos ? "" : target.substr(queryMark + 1);
    try {
        VorApi::Path::Decode(parsed.path);
        while (!rest.empty()) {
            const std::string_view pair = rest.substr(0, rest.find('&'));
            rest.remove_prefix(std::min(rest.size(), pair.size() + 1));
            if (const std::size_t equals = pair.find('='); !pair.empty()) {
                parsed.query.emplace_back(DecodeQuery(pair.substr(0, equals)),
                                          equals == std::string_view::npos ? "" : DecodeQuery(pair.substr(equals + 1)));
            }
        }
    } catch (const Vor::Exception&) {
        return std::nullopt;
    }
    return parsed;
}

const std::string* RequestTarget::FindQuery(std::string_view name) const {
    const auto found = std::ranges::find(query, name, &std::pair<std::string, std::string>::first);
    return found == query.end() ? nullptr : &found->second;
}

} // namespace Sensor::Http
