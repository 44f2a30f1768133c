#pragma once

#include "Sensor/Http/IRevisions.h"
#include "VorApi/Event.h"
#include "VorControl/Control/IControlManager.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Sensor {
class SensorTools;
}

namespace Sensor::Resources {

/// Counts how often the configuration of each service has changed: its parameters, its output map, its register
/// assemblies and its devices at the end of an update that has changed them, when a device changes or goes by itself,
/// at each start and stop, and at the end of each load. For the main loop; loads change it while the main loop waits
/// for them, and devices change on any thread. Tools count their changes themselves.
class Revisions : public Http::IRevisions {
public:
    /// `boot` is part of each tag. Without tools there are tags of services only. The others must outlive this.
    Revisions(std::string boot, VorControl::IControlManager& manager, const SensorTools* tools = nullptr);
    ~Revisions() override;

    const std::string& Boot() const { return boot; }

    /// A tag for each path below a service but that of its figures, and for each tool of the sensor.
    std::optional<std::string> TagOf(const std::string& path) const override;

    /// Raised with the path of a service that was started or stopped, of which the tree itself notifies nobody. Not
    /// during a load.
    Vor::Event<const std::string&>& StartedOrStoppedEvent() { return startedOrStopped; }

private:
    using Instance = VorControl::IControlInstance;
    /// By the name of the part.
    using Hashes = std::map<std::string, std::uint64_t>;
    using Hash = std::function<std::uint64_t()>;

    /// What a handler of devices shares, which may run while this object goes.
    using DeviceChanges = std::shared_ptr<std::atomic<std::uint64_t>>;

    struct Service {
        std::uint64_t revision = 1; ///< but for the changes of devices
        DeviceChanges deviceChanges = std::make_shared<std::atomic<std::uint64_t>>(0);
        Hashes hashes;
        bool isEnabled = false;
        std::optional<std::string> failure = std::nullopt; ///< of the last start or stop
    };

    std::optional<std::uint64_t> RevisionOf(const std::string& path) const;
    void OnLoad(VorControl::IControlManager::PersistenceLoadOpState state);
    void OnEnabled(const Instance& instance);
    /// Raises the revision if the part differs from before.
    void Compare(const std::string& id, const std::string& part, const Hash& hash);
    static Hashes HashesOf(Instance& instance);

    const std::string boot;
    VorControl::IControlManager& manager;
    const SensorTools* const tools;
    std::map<std::string, Service> services; ///< by id
    bool loading = false;
    Vor::Event<const std::string&> startedOrStopped;
    VorControl::Protocol::ServiceSubscriptions<Instance::ParamsUpdatedEvent::CallbackId> params;
    VorControl::Protocol::ServiceSubscriptions<Instance::OutputsUpdatedEvent::CallbackId> outputs;
    VorControl::Protocol::ServiceSubscriptions<Instance::RegisterAssemblyUpdatedEvent::CallbackId> assemblies;
    VorControl::Protocol::ServiceSubscriptions<Instance::DeviceUpdatedEvent::CallbackId> deviceUpdates;
    VorControl::Protocol::ServiceSubscriptions<Instance::DeviceRemovedEvent::CallbackId> deviceRemovals;
    VorControl::Protocol::ServiceSubscriptions<Instance::DeviceRegisterAssemblyUpdatedEvent::CallbackId>
        deviceAssemblies;
    VorControl::Protocol::ServiceSubscriptions<Instance::EnabledEvent::CallbackId> enabled;
    VorControl::IControlManager::PersistenceLoadEvent::CallbackId load;
};

} // namespace Sensor::Resources
