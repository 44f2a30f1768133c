#include "Services/Common/TcpServerProperties.h"

#include "Services/Common/Translate.h"

namespace Services::Common {

TcpServerProperties::TcpServerProperties(const char* failedName, const char* failedTitle) {
    Register("address", address, Translate("Address"), 100);
    Register("failure", failure, Translate("Failure"), 100);
    for (Vor::Params::Value<std::string>* text : {&address, &failure}) {
        text->EnableReadOnly();
        text->SetReadOnly(true);
    }
    RegisterCounter("connected", connected, Translate("Connected Clients"));
    RegisterCounter("refused", refused, Translate("Refused Clients"));
    RegisterCounter("requests", requests, Translate("Requests"));
    RegisterCounter(failedName, failed, failedTitle);
}

void TcpServerProperties::RegisterCounter(const char* name, Vor::Params::Value<unsigned long long>& counter,
                                          const char* title) {
    Register(name, counter, title, 100);
    counter.EnableReadOnly();
    counter.SetReadOnly(true);
}

} // namespace Services::Common
