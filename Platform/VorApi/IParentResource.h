#pragma once

#include "VorApi/RequestInfo.h"

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorApi {

/// A resource that creates and deletes others.
class IParentResource {
public:
    struct Created {
        std::string id;
        std::string path;
    };

    virtual Created Create(const RequestInfo& request, const nlohmann::json& json) = 0;
    virtual void Delete(const RequestInfo& request) = 0;

protected:
    ~IParentResource() = default;
};

} // namespace VorApi
