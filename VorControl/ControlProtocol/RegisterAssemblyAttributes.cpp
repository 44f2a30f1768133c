#include "VorControl/ControlProtocol/RegisterAssemblyAttributes.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

RegisterAssemblyAttributes::RegisterAssemblyAttributes()
    : Group("") {
    const auto registerReadOnly = [this](const char* name, auto& parameter, const char* title) {
        Register(name, parameter, Translate("beApp.ctrl", title), 100);
        parameter.EnableReadOnly();
        parameter.SetReadOnly(true);
    };
    registerReadOnly("isGlobalAddressSpaceUsed", isGlobalAddressSpaceUsed, "Is Global Address Space Used");
    registerReadOnly("outputIdMin", outputIdMin, "Minimum Output Id");
    registerReadOnly("outputIdMax", outputIdMax, "Maximum Output Id");
    registerReadOnly("outputIdReadOnly", outputIdReadOnly, "Output Id Configurable Or Not");
}

} // namespace VorControl::ControlProtocol
