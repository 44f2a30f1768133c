#pragma once

#include "VorApi/RequestInfo.h"
#include "VorApi/ResponseInfoEx.h"

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace VorApi {

/// A resource that creates and deletes others. One that answers a deletion later overrides the second operation, which
/// is what is called.
class IParentResource {
public:
    struct Created {
        std::string id;
        std::string path;
    };

    virtual Created Create(const RequestInfo& request, const nlohmann::json& json) = 0;
    virtual void Delete(const RequestInfo& request) = 0;
    virtual void Delete(const RequestInfo& request, ResponseInfoEx& /*response*/) { Delete(request); }
    /// Whether clients can create something, and not only delete.
    virtual bool Creates() const { return true; }
    /// Whether clients can delete something.
    virtual bool Deletes() const { return true; }

protected:
    ~IParentResource() = default;
};

} // namespace VorApi
