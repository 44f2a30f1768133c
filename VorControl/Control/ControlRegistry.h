#pragma once

#include "VorApi/Event.h"
#include "VorControl/Control/ControlInfo.h"
#include "VorPlugin/PluginManager.h"

#include <map>
#include <string>
#include <vector>

namespace VorControl {

/// The catalogue of the service types of all plug-ins, by type name. It has no lock: the plug-in manager must not raise
/// its load event while another thread reads the catalogue. The types of a library that is loaded after the module was
/// constructed are listed, but no service is created for them.
class ControlRegistry {
public:
    /// Adds the types of the libraries that are loaded, then subscribes to the load event.
    explicit ControlRegistry(VorPlugin::PluginManager& plugins);
    ~ControlRegistry();

    ControlRegistry(const ControlRegistry&) = delete;
    ControlRegistry& operator=(const ControlRegistry&) = delete;

    /// Adds the types of the libraries that are loaded, and subscribes to the load event in place of a former
    /// subscription.
    void AttachPlugins();
    void DetachPlugins();
    /// Adds or removes each record of the library. A record that fails is logged, and the others are still processed.
    void ProcessPluginLoad(const VorPlugin::PluginLib& lib, VorPlugin::PluginEvent event);

    /// Copies the record, which refers to the same factory. Fails with yERROR_ALREADY_EXISTS.
    void Add(const ControlInfo& info);
    /// Fails with yERROR_NOT_FOUND.
    void Remove(const std::string& typeName);
    /// Null when there is none.
    const ControlInfo* FindByTypeName(const std::string& typeName) const;
    /// Ascending by type name. The pointers are valid as long as the registry exists.
    std::vector<const ControlInfo*> List() const;

private:
    using Infos = std::map<std::string, ControlInfo>;
    using LoadEvent = Vor::Event<const VorPlugin::PluginLib&, VorPlugin::PluginEvent>;

    VorPlugin::PluginManager& plugins;
    Infos infos;
    /// The records that were removed. They are kept because services made from them may still run.
    std::vector<Infos::node_type> retired;
    LoadEvent::CallbackId loadCallback;
};

} // namespace VorControl
