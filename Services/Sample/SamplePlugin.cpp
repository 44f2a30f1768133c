#include "Services/Sample/SampleService.h"
#include "Vor/Exception.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorControl/Control/IControlFactory.h"
#include "VorControl/Control/VorCnLib.h"
#include "VorPlugin/PluginLib.h"
#include "yApi/yStatus.h"

#include <memory>

namespace Services::Sample {

namespace {

/// Required: makes the one service of its type.
class SampleFactory : public VorControl::IControlFactory {
public:
    std::shared_ptr<VorControl::ControlProtocol::IProtocol>
    Create(const VorControl::ControlProtocol::ControlProtocolEnviron& environ) override {
        return std::make_shared<SampleService>(environ);
    }
};

std::shared_ptr<VorControl::ControlPlugin> MakePlugin() {
    VorControl::ControlInfo info;
    info.SetTypeName("sample").SetDisplayName("Sample"); // Required: the type name is unique among all services.
    info.SetDescription("Keeps the last value of each measurement.").AddCategory("Examples"); // Optional.
    // Optional: without it the service runs on every platform.
    VorControl::ControlInfo::SupportedEnvironmentList environments;
    environments.vorsuiteDaemon = false;
    info.SetSupportedEnvironment(environments);

    auto plugin = VorControl::ControlPlugin::Create();
    plugin->Add(info, std::make_shared<SampleFactory>());
    return plugin;
}

} // namespace

} // namespace Services::Sample

// Required: what the loader asks of each plug-in library.
extern "C" {

/// A library without an assembly of its own hands out the one that it builds on.
yStatus yPlugin_ConstructAssembly(yAssembly* assembly) {
    return VorCnLib_Construct(assembly);
}

const char* yPlugin_AssemblyVersion() {
    return "1.0.0.0";
}

const char* yPlugin_PlatformVersion() {
    return "1.0.0.0";
}

/// Hands over the plug-ins of the library. No exception may leave it.
yStatus yPlugin_Publish(VorPlugin::PluginLib& lib) {
    try {
        lib.Add(Services::Sample::MakePlugin());
    } catch (const std::exception& e) {
        Vor::Exception::LogException(e);
        return yERROR;
    }
    return yOK;
}
}
