#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Http {

/// A request with another one is refused.
inline constexpr std::array<std::string_view, 7> HandledMethods{"GET",   "HEAD",   "POST",   "PUT",
                                                                "PATCH", "DELETE", "OPTIONS"};

/// Header fields in the order in which they are sent. Names are compared without case (RFC 9110, 5.1).
class HttpFields {
public:
    HttpFields() = default;
    HttpFields(std::initializer_list<std::pair<std::string, std::string>> fields)
        : fields(fields) {}

    void Add(std::string name, std::string value) { fields.emplace_back(std::move(name), std::move(value)); }
    /// The value of the field; several fields of that name are one list, joined by ", " (RFC 9110, 5.3).
    std::optional<std::string> Find(std::string_view name) const;
    /// How many fields have that name.
    std::size_t Count(std::string_view name) const;

    // For range-based loops.
    auto begin() const { return fields.begin(); } // NOLINT(readability-identifier-naming)
    auto end() const { return fields.end(); }     // NOLINT(readability-identifier-naming)

private:
    std::vector<std::pair<std::string, std::string>> fields;
};

/// A client's request as it was received, with a body whose framing is removed.
struct HttpRequest {
    std::string method; ///< such as "GET", as it was sent
    std::string target; ///< as it was sent: percent-coded, with the query
    HttpFields fields = {};
    std::string body = {};
    std::string peerAddress = {}; ///< the client's IP address, as digits
    bool peerIsLoopback = false;
};

} // namespace Sensor::Http
