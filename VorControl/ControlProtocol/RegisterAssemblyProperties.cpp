#include "VorControl/ControlProtocol/RegisterAssemblyProperties.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

RegisterAssemblyProperties::RegisterAssemblyProperties()
    : Group("")
    , version("1.2") {
    const auto registerReadOnly = [this](const char* name, auto& parameter, const char* title) {
        Register(name, parameter, Translate("beApp.ctrl", title), 100);
        parameter.EnableReadOnly();
        parameter.SetReadOnly(true);
    };
    registerReadOnly("version", version, "Register Assembly Version");
    registerReadOnly("displayName", displayName, "Register Assembly display name");
    registerReadOnly("id", id, "Register Assembly Identifier");
}

} // namespace VorControl::ControlProtocol
