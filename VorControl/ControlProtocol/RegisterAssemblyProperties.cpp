#include "VorControl/ControlProtocol/RegisterAssemblyProperties.h"

#include "VorControl/ControlProtocol/Translate.h"

namespace VorControl::ControlProtocol {

namespace {

template <class P>
void RegisterReadOnly(Vor::Params::Group& group, const char* name, P& parameter, const char* title) {
    group.Register(name, parameter, Translate("beApp.ctrl", title), 100);
    parameter.EnableReadOnly();
    parameter.SetReadOnly(true);
}

} // namespace

RegisterAssemblyProperties::RegisterAssemblyProperties()
    : Group("")
    , version("1.2") {
    RegisterReadOnly(*this, "version", version, "Register Assembly Version");
    RegisterReadOnly(*this, "displayName", displayName, "Register Assembly display name");
    RegisterReadOnly(*this, "id", id, "Register Assembly Identifier");
}

RegisterAssemblyAttributes::RegisterAssemblyAttributes()
    : Group("") {
    RegisterReadOnly(*this, "isGlobalAddressSpaceUsed", isGlobalAddressSpaceUsed, "Is Global Address Space Used");
    RegisterReadOnly(*this, "outputIdMin", outputIdMin, "Minimum Output Id");
    RegisterReadOnly(*this, "outputIdMax", outputIdMax, "Maximum Output Id");
    RegisterReadOnly(*this, "outputIdReadOnly", outputIdReadOnly, "Output Id Configurable Or Not");
}

} // namespace VorControl::ControlProtocol
