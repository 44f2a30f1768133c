#include "VorControl/Protocol/RequiredKey.h"

#include "Vor/Exception.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

const std::string& RequiredKey(const VorApi::RequestInfo& request, const char* name, const char* failureText) {
    const std::string* const value = request.FindKey(name);
    if (value != nullptr) {
        return *value;
    }
    if (failureText == nullptr) {
        Vor::Throw(yERROR_PARAMETER);
    }
    Vor::Throw(yERROR_PARAMETER, failureText);
}

} // namespace VorControl::Protocol
