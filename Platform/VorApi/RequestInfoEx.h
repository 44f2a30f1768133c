#pragma once

#include "VorApi/RequestInfo.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VorApi {

/// A request that is answered with a document.
class RequestInfoEx : public RequestInfo {
public:
    /// What a client asks for beside the path: names with values, decoded, in order. A name may be there several times.
    using Query = std::vector<std::pair<std::string, std::string>>;

    RequestInfoEx(Keys keys, bool wantsSchema, Query query = {}, bool prefersAsync = false)
        : RequestInfo(std::move(keys))
        , wantsSchema(wantsSchema)
        , query(std::move(query))
        , prefersAsync(prefersAsync) {}

    /// Whether the client wants the schema under "_schema", beside the values.
    bool WantsSchema() const { return wantsSchema; }
    /// Whether the client would rather be answered at once, with the path of what goes on, than wait for its end.
    bool PrefersAsync() const { return prefersAsync; }

    const Query& GetQuery() const { return query; }
    /// The first value of that name; null when there is none.
    const std::string* FindQuery(std::string_view name) const {
        const auto found = std::ranges::find(query, name, &Query::value_type::first);
        return found == query.end() ? nullptr : &found->second;
    }

private:
    bool wantsSchema;
    Query query;
    bool prefersAsync;
};

} // namespace VorApi
