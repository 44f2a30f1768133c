#include "VorControl/Control/ControlRegistry.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorControl/Control/ControlPlugin.h"
#include "VorPlugin/PluginLib.h"
#include "yApi/yStatus.h"

#include <exception>

namespace VorControl {

ControlRegistry::ControlRegistry(VorPlugin::PluginManager& plugins)
    : plugins(plugins) {
    AttachPlugins();
}

ControlRegistry::~ControlRegistry() {
    Vor::CleanUp([this] { DetachPlugins(); });
}

void ControlRegistry::AttachPlugins() {
    DetachPlugins();
    Vor::LogInfo("ControlRegistry loading plugins...");
    for (std::size_t i = 0; i < plugins.Count(); ++i) {
        ProcessPluginLoad(plugins.At(i), VorPlugin::PluginEvent::Loaded);
    }
    loadCallback = plugins.LoadEvent().Add(
        [this](const VorPlugin::PluginLib& lib, VorPlugin::PluginEvent event) { ProcessPluginLoad(lib, event); });
}

void ControlRegistry::DetachPlugins() {
    plugins.LoadEvent().Remove(loadCallback);
}

void ControlRegistry::ProcessPluginLoad(const VorPlugin::PluginLib& lib, VorPlugin::PluginEvent event) {
    const bool load = event == VorPlugin::PluginEvent::Loaded;
    if (!load && event != VorPlugin::PluginEvent::Unloading) {
        return;
    }
    for (const auto& plugin : lib.PluginsByType("VorControl.ControlPlugin")) {
        const auto& controlPlugin = *static_cast<const ControlPlugin*>(plugin->GetObject());
        for (std::size_t i = 0; i < controlPlugin.ControlInfoCount(); ++i) {
            const ControlInfo& info = controlPlugin.ControlInfoAt(i);
            try {
                if (load) {
                    Add(info);
                } else {
                    Remove(info.TypeName());
                }
            } catch (const std::exception& e) {
                Vor::LogThrown(e,
                               load ? "Failed to add control service \"%s\" (%s)"
                                    : "Failed to remove control service \"%s\" (%s)",
                               info.DisplayName(), e.what());
            }
        }
    }
}

void ControlRegistry::Add(const ControlInfo& info) {
    if (!infos.emplace(info.TypeName(), info).second) {
        Vor::Throw(yERROR_ALREADY_EXISTS);
    }
}

void ControlRegistry::Remove(const std::string& typeName) {
    const auto found = infos.find(typeName);
    if (found == infos.end()) {
        Vor::Throw(yERROR_NOT_FOUND);
    }
    retired.push_back(infos.extract(found));
}

const ControlInfo* ControlRegistry::FindByTypeName(const std::string& typeName) const {
    const auto found = infos.find(typeName);
    return found == infos.end() ? nullptr : &found->second;
}

std::vector<const ControlInfo*> ControlRegistry::List() const {
    std::vector<const ControlInfo*> list;
    list.reserve(infos.size());
    for (const auto& entry : infos) {
        list.push_back(&entry.second);
    }
    return list;
}

} // namespace VorControl
