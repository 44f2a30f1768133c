#include "Services/Ascii/AsciiProtocol.h"
#include "Services/Common/PluginEntry.h"
#include "Services/Common/Translate.h"

#include <memory>

void Services::Common::FillPlugin(VorControl::ControlPlugin& plugin) {
    VorControl::ControlInfo info;
    info.SetTypeName("ascii")
        .SetDisplayName("e-ascii")
        .SetDescription(
            Translate("Lets clients read measured values and command the sensor with lines of text over TCP."))
        .AddCategory("Industrial Protocols");
    plugin.Add(info, std::make_shared<ServiceFactory<Ascii::AsciiProtocol>>());
}
