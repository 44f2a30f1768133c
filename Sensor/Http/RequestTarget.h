#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Http {

/// What a request's target names (RFC 9112, 3.2.1 and 3.2.2).
struct RequestTarget {
    std::string path;                                            ///< percent-coded, without the query
    std::vector<std::pair<std::string, std::string>> query = {}; ///< decoded, in order
    std::optional<std::string> authority = std::nullopt;         ///< of a URL; it counts instead of the field Host

    /// Nothing for what isn't an absolute path or an "http" URL, with a query or without, of correct percent codes.
    static std::optional<RequestTarget> Parse(std::string_view target);

    /// The first value of that name; null when there is none.
    const std::string* FindQuery(std::string_view name) const;
};

} // namespace Sensor::Http
