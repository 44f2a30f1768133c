#include "Services/Modbus/ModbusProperties.h"

#include "Services/Modbus/Translate.h"

namespace Services::Modbus {

ModbusProperties::ModbusProperties() {
    Register("address", address, Translate("Address"), 100);
    Register("failure", failure, Translate("Failure"), 100);
    for (Vor::Params::Value<std::string>* text : {&address, &failure}) {
        text->EnableReadOnly();
        text->SetReadOnly(true);
    }
}

} // namespace Services::Modbus
