#include "Services/Ascii/AsciiProtocol.h"
#include "Services/Ascii/ServiceVersion.h"
#include "Services/Common/Translate.h"
#include "Vor/Exception.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/IControlFactory.h"
#include "VorControl/Control/VorCnLib.h"
#include "VorPlugin/PluginLib.h"

#include <memory>

namespace Services::Ascii {

using Common::Translate;

namespace {

class AsciiFactory : public VorControl::IControlFactory {
public:
    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return std::make_shared<AsciiProtocol>(environ);
    }
};

std::shared_ptr<VorControl::ControlPlugin> MakePlugin() {
    VorControl::ControlInfo info;
    info.SetTypeName("ascii")
        .SetDisplayName("e-ascii")
        .SetDescription(
            Translate("Lets clients read measured values and command the sensor with lines of text over TCP."))
        .AddCategory("Industrial Protocols");
    auto plugin = VorControl::ControlPlugin::Create();
    plugin->Add(info, std::make_shared<AsciiFactory>());
    return plugin;
}

} // namespace

} // namespace Services::Ascii

extern "C" {

yStatus yPlugin_ConstructAssembly(yAssembly* made) {
    return VorCnLib_Construct(made);
}

const char* yPlugin_AssemblyVersion() {
    return Services::Ascii::ServiceVersion;
}

const char* yPlugin_PlatformVersion() {
    return Services::Ascii::ServiceVersion;
}

yStatus yPlugin_Publish(VorPlugin::PluginLib& lib) {
    try {
        lib.Add(Services::Ascii::MakePlugin());
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
