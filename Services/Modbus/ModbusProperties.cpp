#include "Services/Modbus/ModbusProperties.h"

#include "Services/Common/Translate.h"

namespace Services::Modbus {

using Common::Translate;

ModbusProperties::ModbusProperties() {
    Register("address", address, Translate("Address"), 100);
    Register("failure", failure, Translate("Failure"), 100);
    for (Vor::Params::Value<std::string>* text : {&address, &failure}) {
        text->EnableReadOnly();
        text->SetReadOnly(true);
    }
    Register("connected", connected, Translate("Connected Clients"), 100);
    Register("refused", refused, Translate("Refused Clients"), 100);
    Register("requests", requests, Translate("Requests"), 100);
    Register("exceptions", exceptions, Translate("Exceptions"), 100);
    for (Vor::Params::Value<unsigned long long>* counter : {&connected, &refused, &requests, &exceptions}) {
        counter->EnableReadOnly();
        counter->SetReadOnly(true);
    }
}

} // namespace Services::Modbus
