#include "Services/Ascii/AsciiProperties.h"

#include "Services/Common/Translate.h"

namespace Services::Ascii {

using Common::Translate;

AsciiProperties::AsciiProperties() {
    Register("address", address, Translate("Address"), 100);
    Register("failure", failure, Translate("Failure"), 100);
    for (Vor::Params::Value<std::string>* text : {&address, &failure}) {
        text->EnableReadOnly();
        text->SetReadOnly(true);
    }
    Register("connected", connected, Translate("Connected Clients"), 100);
    Register("refused", refused, Translate("Refused Clients"), 100);
    Register("requests", requests, Translate("Requests"), 100);
    Register("errors", errors, Translate("Errors"), 100);
    Register("dropped", dropped, Translate("Dropped Frames"), 100);
    for (Vor::Params::Value<unsigned long long>* counter : {&connected, &refused, &requests, &errors, &dropped}) {
        counter->EnableReadOnly();
        counter->SetReadOnly(true);
    }
}

} // namespace Services::Ascii
