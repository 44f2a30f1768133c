#pragma once

#include "VorApi/Event.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorPlugin/PluginManager.h"

#include <map>
#include <string>
#include <vector>

namespace VorControl {

/// The catalogue of the service types of all plug-ins, by type name. It has no lock: the plug-in manager must not raise
/// its load event while another thread reads the catalogue. A library that is loaded after the module was built is
/// listed, but gets no service.
class ControlRegistry {
public:
    /// Takes in what is loaded, then subscribes to the load event.
    explicit ControlRegistry(VorPlugin::PluginManager& plugins);
    ~ControlRegistry();

    ControlRegistry(const ControlRegistry&) = delete;
    ControlRegistry& operator=(const ControlRegistry&) = delete;

    void AttachPlugins();
    void DetachPlugins();
    /// Adds or removes each record of the library. A record that fails is logged, and the others still come through.
    void ProcessPluginLoad(const VorPlugin::PluginLib& lib, VorPlugin::PluginEvent event);

    /// Copies the record, but for its factory. Fails with yERROR_ALREADY_EXISTS.
    void Add(const ControlInfo& info);
    /// Fails with yERROR_NOT_FOUND.
    void Remove(const std::string& typeName);
    /// Null when there is none.
    const ControlInfo* FindByTypeName(const std::string& typeName) const;
    /// Ascending by type name. The pointers are good as long as the registry.
    std::vector<const ControlInfo*> List() const;

private:
    using Infos = std::map<std::string, ControlInfo>;
    using LoadEvent = Vor::Event<const VorPlugin::PluginLib&, VorPlugin::PluginEvent>;

    VorPlugin::PluginManager& plugins;
    Infos infos;
    /// The records that were removed, since services that were made from them may still run.
    std::vector<Infos::node_type> retired;
    LoadEvent::CallbackId loadCallback;
};

} // namespace VorControl
