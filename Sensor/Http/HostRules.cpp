#include "Sensor/Http/HostRules.h"

#include "Net/Network.h"
#include "Sensor/Http/FieldList.h"
#include "Sensor/Http/Problem.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Sensor::Http {

namespace {

/// A host and its port as a URL has them (RFC 3986, 3.2), in small letters.
struct Authority {
    std::string name;
    std::string port; ///< empty for the scheme's own

    bool operator==(const Authority&) const = default;
};

std::optional<Authority> ParseAuthority(std::string_view text) {
    const std::size_t nameEnd = text.starts_with('[') ? text.find(']') + 1 : text.find(':');
    const std::string_view name = text.substr(0, nameEnd);
    std::string_view port = text.substr(name.size());
    if (!port.empty()) {
        if (port.front() != ':') {
            return std::nullopt;
        }
        port.remove_prefix(1);
    }
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (name.empty() || !std::ranges::all_of(port, isDigit)) {
        return std::nullopt;
    }
    return Authority{LowerCase(name), std::string(port)};
}

/// The host of a page with this origin (RFC 6454, 7).
std::optional<Authority> ParseOrigin(std::string_view origin, std::string_view scheme, std::string_view schemePort) {
    if (!origin.starts_with(scheme)) {
        return std::nullopt;
    }
    auto parsed = ParseAuthority(origin.substr(scheme.size()));
    if (parsed && parsed->port.empty()) {
        parsed->port = schemePort;
    }
    return parsed;
}

bool IsSameHost(const std::string& origin, const Authority& host) {
    for (const auto& [scheme, port] : {std::pair("http://", "80"), std::pair("https://", "443")}) {
        const Authority expected{host.name, host.port.empty() ? port : host.port};
        if (ParseOrigin(origin, scheme, port) == expected) {
            return true;
        }
    }
    return false;
}

bool IsLoopback(const std::string& name) {
    const bool isIpV6 = name.starts_with('[');
    const auto address = Net::ParseAddress(isIpV6 ? name.substr(1, name.size() - 2) : name);
    return name == "localhost" || (address && Net::IsLoopback(*address));
}

} // namespace

bool IsChanging(const HttpRequest& request) {
    return request.method != "GET" && request.method != "HEAD" && request.method != "OPTIONS";
}

HostRules::HostRules(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const auto parsed = ParseAuthority(name);
        this->names.push_back(parsed ? parsed->name : LowerCase(name));
    }
}

std::optional<HttpResponse> HostRules::Check(const HttpRequest& request,
                                             const std::optional<std::string>& authority) const {
    const std::string given = authority ? *authority : request.fields.Find("Host").value_or("");
    const auto host = ParseAuthority(given);
    if (!host) {
        return ProblemResponse({400, "The host is '" + given + "', and a host's name or address was expected."});
    }
    if (!IsThisHost(host->name)) {
        return ProblemResponse(
            {421, "This is not '" + host->name +
                      "': a loopback name or address was expected, or one that the sensor was started with."});
    }
    const auto origin = request.fields.Find("Origin");
    if (origin && IsChanging(request) && !IsSameHost(*origin, *host)) {
        return ProblemResponse({403, "A page of another host, '" + *origin + "', may not change anything here."});
    }
    return std::nullopt;
}

bool HostRules::IsThisHost(const std::string& name) const {
    return IsLoopback(name) || std::ranges::find(names, name) != names.end();
}

} // namespace Sensor::Http
