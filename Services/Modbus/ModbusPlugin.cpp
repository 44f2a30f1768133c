#include "Services/Common/PluginEntry.h"
#include "Services/Common/Translate.h"
#include "Services/Modbus/ModbusProtocol.h"

#include <memory>

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("modbus")
        .SetDisplayName(Translate("Modbus TCP"))
        .SetDescription(
            Translate("Lets Modbus TCP clients, such as PLCs, read measured values and states and command the sensor."))
        .AddCategory("Industrial Protocols");
    plugin.Add(info, std::make_shared<ServiceFactory<Modbus::ModbusProtocol>>());
}
