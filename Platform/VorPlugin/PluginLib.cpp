#include "VorPlugin/PluginLib.h"

#include "Vor/Exception.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace VorPlugin {

PluginLib::PluginLib(std::string path)
    : path(std::move(path)) {}

void PluginLib::Add(std::shared_ptr<IPlugin> plugin) {
    if (!plugin) {
        Vor::Throw(yERROR_PARAMETER, "Library \"%s\" published an empty plug-in", path);
    }
    plugins.push_back(std::move(plugin));
}

std::vector<std::shared_ptr<IPlugin>> PluginLib::PluginsByType(const std::string& type) const {
    std::vector<std::shared_ptr<IPlugin>> found;
    std::copy_if(plugins.begin(), plugins.end(), std::back_inserter(found),
                 [&type](const auto& plugin) { return plugin->Type() == type; });
    return found;
}

} // namespace VorPlugin
