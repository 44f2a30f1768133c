#include "Sensor/ServiceModule.h"

#include "Vor/Logging.h"
#include "VorControl/Control/ControlCreateException.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorPlugin/PluginManager.h"

#include <algorithm>

namespace Sensor {

namespace {

constexpr const char* ControlPluginType = "VorControl.ControlPlugin";

const VorPlugin::PluginLib* FindLibrary(const VorPlugin::PluginManager& plugins, const std::string& typeName) {
    for (std::size_t index = 0; index < plugins.Count(); ++index) {
        const std::vector<std::string> types = ServiceTypes(plugins.At(index));
        if (std::find(types.begin(), types.end(), typeName) != types.end()) {
            return &plugins.At(index);
        }
    }
    return nullptr;
}

} // namespace

std::vector<std::string> ServiceTypes(const VorPlugin::PluginLib& library) {
    std::vector<std::string> names;
    for (const auto& plugin : library.PluginsByType(ControlPluginType)) {
        const auto* control = static_cast<const VorControl::ControlPlugin*>(plugin->GetObject());
        for (std::size_t index = 0; index < control->ControlInfoCount(); ++index) {
            names.push_back(control->ControlInfoAt(index).TypeName());
        }
    }
    return names;
}

std::unique_ptr<VorControl::ControlModule> MakeServiceModule(VorPlugin::PluginManager& plugins,
                                                             VorApi::ResourceRouter& router,
                                                             const VorControl::ControlModuleEnviron& environ) {
    for (;;) {
        try {
            return std::make_unique<VorControl::ControlModule>(plugins, router, environ);
        } catch (const VorControl::ControlCreateException& e) {
            const VorPlugin::PluginLib* library = FindLibrary(plugins, e.TypeName());
            if (library == nullptr) {
                throw;
            }
            Vor::LogUser(Vor::UserError, "VorControl", "%1$s is left out: its service %2$s can't be created (%3$s).",
                         library->Path(), e.TypeName(), e.what());
            plugins.Unload(*library);
        }
    }
}

} // namespace Sensor
