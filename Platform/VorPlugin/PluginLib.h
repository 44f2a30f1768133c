#pragma once

#include "VorPlugin/IPlugin.h"

#include <memory>
#include <string>
#include <vector>

namespace VorPlugin {

/// A library and the plug-ins that it published. Its owner serialises.
class PluginLib {
public:
    explicit PluginLib(std::string path);

    /// The file, as it was named to the manager.
    const std::string& Path() const { return path; }

    /// Called by the library's `extern "C" yStatus yPlugin_Publish(VorPlugin::PluginLib&)`. Throws -997 for none.
    void Add(std::shared_ptr<IPlugin> plugin);
    /// In the order in which they were added.
    std::vector<std::shared_ptr<IPlugin>> PluginsByType(const std::string& type) const;

private:
    friend class PluginManager;

    std::string path;
    std::vector<std::shared_ptr<IPlugin>> plugins;
};

} // namespace VorPlugin
