#include "Services/Modbus/ModbusProperties.h"

#include "Services/Common/Translate.h"

namespace Services::Modbus {

using Common::Translate;

ModbusProperties::ModbusProperties() {
    RegisterCounter("exceptions", exceptions, Translate("Exceptions"));
}

} // namespace Services::Modbus
