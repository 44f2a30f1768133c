#include "Services/Common/Translate.h"
#include "Services/Modbus/ModbusProtocol.h"
#include "Vor/Exception.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/IControlFactory.h"
#include "VorControl/Control/VorCnLib.h"
#include "VorPlugin/PluginLib.h"
#include "yApi/yAssembly.h"
#include "yApi/yVersion.h"

#include <memory>

namespace Services::Modbus {

using Common::Translate;

namespace {

constexpr const char* VersionText = "1.0.0.0";

class ModbusFactory : public VorControl::IControlFactory {
public:
    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return std::make_shared<ModbusProtocol>(environ);
    }
};

std::shared_ptr<VorControl::ControlPlugin> MakePlugin() {
    VorControl::ControlInfo info;
    info.SetTypeName("modbus")
        .SetDisplayName(Translate("Modbus TCP"))
        .SetDescription(
            Translate("Lets Modbus TCP clients, such as PLCs, read measured values and states and command the sensor."))
        .AddCategory("Industrial Protocols");
    auto plugin = VorControl::ControlPlugin::Create();
    plugin->Add(info, std::make_shared<ModbusFactory>());
    return plugin;
}

yAssembly assembly = nullptr;

yStatus Fill(yAssembly made) {
    const yStatus status = xyAssembly_AddDependency(made, &VorCnLib_Construct);
    return status == yOK ? xyAssembly_Finalize(made) : status;
}

} // namespace

} // namespace Services::Modbus

extern "C" {

yStatus yPlugin_ConstructAssembly(yAssembly* made) {
    using namespace Services::Modbus;
    if (assembly != nullptr) {
        yAssembly_AddReference(assembly);
        *made = assembly;
        return yOK;
    }
    yVersion version;
    yStatus status = yVersion_Parse(&version, VersionText);
    if (status == yOK) {
        status = xyAssembly_ConstructInternal(&assembly, "ModbusService", version, version);
    }
    if (status == yOK) {
        status = Fill(assembly);
    }
    if (status != yOK) {
        xyAssembly_VRelease(assembly);
        return status;
    }
    *made = assembly;
    return yOK;
}

const char* yPlugin_AssemblyVersion() {
    return Services::Modbus::VersionText;
}

const char* yPlugin_PlatformVersion() {
    return Services::Modbus::VersionText;
}

yStatus yPlugin_Publish(VorPlugin::PluginLib& lib) {
    try {
        lib.Add(Services::Modbus::MakePlugin());
        return yOK;
    } catch (const Vor::Exception& e) {
        Vor::Exception::LogException(e);
        return e.Status();
    } catch (const std::exception& e) {
        Vor::Exception::LogException(e);
        return yERROR;
    }
}
}
