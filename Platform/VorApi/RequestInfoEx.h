#pragma once

#include "VorApi/RequestInfo.h"

#include <utility>

namespace VorApi {

/// A request that is answered with a document.
class RequestInfoEx : public RequestInfo {
public:
    RequestInfoEx(Keys keys, bool wantsSchema)
        : RequestInfo(std::move(keys))
        , wantsSchema(wantsSchema) {}

    /// Whether the client wants the schema under "_schema", beside the values.
    bool WantsSchema() const { return wantsSchema; }

private:
    bool wantsSchema;
};

} // namespace VorApi
