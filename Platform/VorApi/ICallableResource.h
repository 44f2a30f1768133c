#pragma once

#include "VorApi/RequestInfoEx.h"
#include "VorApi/ResponseInfoEx.h"
#include "VorApi/VorDataTree.h"

namespace VorApi {

/// A resource that can be invoked. One that answers later also overrides the second operation, which is what is called.
class ICallableResource {
public:
    /// `data` is the body, null when there is none. Returns the result.
    virtual VorDataTree Invoke(const RequestInfoEx& request, const VorDataTree& data) = 0;
    virtual VorDataTree Invoke(const RequestInfoEx& request, ResponseInfoEx& /*response*/, const VorDataTree& data) {
        return Invoke(request, data);
    }
    /// Whether there is a command for the request that has no document.
    virtual bool IsCommand(const RequestInfoEx& /*request*/) const { return false; }

protected:
    ~ICallableResource() = default;
};

} // namespace VorApi
