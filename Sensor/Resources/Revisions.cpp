#include "Sensor/Resources/Revisions.h"

#include "Sensor/Resources/ConfigurationHash.h"
#include "Sensor/SensorTools.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Path.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/InstanceLocks.h"
#include "VorControl/ControlProtocol/ScopeLocks.h"

#include <cstddef>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

namespace Sensor::Resources {

using VorApi::Path;
using VorControl::IControlInstance;
using VorControl::IControlManager;

namespace {

constexpr const char* ParametersPart = "parameters";
constexpr const char* OutputsPart = "outputs";
constexpr const char* DevicesPart = "devices";

std::string AssemblyPart(const std::string& assemblyId) {
    return "registerAssemblies/" + assemblyId;
}

/// What `hash` returns; 0 for a part that can't be read.
template <class Hash>
std::uint64_t HashOrNone(const Hash& hash) {
    try {
        return hash();
    } catch (const std::exception&) {
        return 0;
    }
}

std::uint64_t ParametersHash(IControlInstance& instance) {
    return HashOrNone([&] { return HashOf(*instance.Params()); });
}

std::uint64_t OutputsHash(IControlInstance& instance) {
    return HashOrNone([&] {
        const VorControl::InstanceOutputsMapLock lock(instance);
        return HashOf(instance.OutputsMap());
    });
}

std::uint64_t AssemblyHash(IControlInstance& instance, const std::string& assemblyId) {
    return HashOrNone([&] {
        const auto assembly = instance.RegisterAssembly(assemblyId.c_str());
        const VorControl::ControlProtocol::AssemblyLock lock(*assembly);
        return HashOf(*assembly);
    });
}

std::uint64_t DevicesHash(const IControlInstance& instance) {
    return HashOrNone([&] {
        VorControl::IControlDeviceManager& devices = instance.DeviceManager();
        const VorControl::DeviceManagerLock lock(devices);
        return HashOf(devices);
    });
}

/// Whether a path below a service is that of figures, of the service or of a port.
bool IsOfFigures(const std::vector<std::string>& steps) {
    constexpr std::size_t ServiceSteps = 2;
    constexpr std::size_t PortSteps = 6;
    const std::size_t before = steps.size() - 1;
    return (before == ServiceSteps || before == PortSteps) && steps.back() == "metrics";
}

} // namespace

Revisions::Revisions(std::string boot, IControlManager& manager, const SensorTools* tools)
    : boot(std::move(boot))
    , manager(manager)
    , tools(tools)
    , params(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddParamsUpdatedEventHandler([this, &instance](const std::string& id, bool) {
                  Compare(id, ParametersPart, [&] { return ParametersHash(instance); });
              });
          },
          &IControlInstance::RemoveParamsUpdatedEventHandler, "A handler of changed parameters can't be removed.")
    , outputs(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddOutputsUpdatedEventHandler([this, &instance](const std::string& id, bool) {
                  Compare(id, OutputsPart, [&] { return OutputsHash(instance); });
              });
          },
          &IControlInstance::RemoveOutputsUpdatedEventHandler, "A handler of a changed output map can't be removed.")
    , assemblies(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddRegisterAssemblyUpdatedEventHandler(
                  [this, &instance](const std::string& id, const std::string& assemblyId) {
                      Compare(id, AssemblyPart(assemblyId), [&] { return AssemblyHash(instance, assemblyId); });
                  });
          },
          &IControlInstance::RemoveRegisterAssemblyUpdatedEventHandler,
          "A handler of changed register assemblies can't be removed.")
    , deviceUpdates(
          manager,
          [this](IControlInstance& instance) {
              // A device changes on any thread, and the selection on the main loop.
              return instance.AddDeviceUpdatedEventHandler(
                  [this, &instance, changes = services[instance.Id()].deviceChanges](
                      const std::string& id, const std::string& deviceId, bool) {
                      if (deviceId.empty()) {
                          Compare(id, DevicesPart, [&] { return DevicesHash(instance); });
                      } else {
                          ++*changes;
                      }
                  });
          },
          "A handler of changed devices can't be added.", &IControlInstance::RemoveDeviceUpdatedEventHandler,
          "A handler of changed devices can't be removed.")
    , deviceRemovals(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddDeviceRemovedEventHandler(
                  [changes = services[instance.Id()].deviceChanges](const std::string&, const std::string&, bool) {
                      ++*changes;
                  });
          },
          "A handler of removed devices can't be added.", &IControlInstance::RemoveDeviceRemovedEventHandler,
          "A handler of removed devices can't be removed.")
    , deviceAssemblies(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddDeviceRegisterAssemblyUpdatedEventHandler(
                  [this, &instance](const std::string& id, const std::string&, const std::string&, const std::string&) {
                      Compare(id, DevicesPart, [&] { return DevicesHash(instance); });
                  });
          },
          "A handler of changed ports can't be added.",
          &IControlInstance::RemoveDeviceRegisterAssemblyUpdatedEventHandler,
          "A handler of changed ports can't be removed.")
    , enabled(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddEnabledEventHandler([this, &instance](const std::string&) { OnEnabled(instance); });
          },
          &IControlInstance::RemoveEnabledEventHandler, "A handler of started services can't be removed.")
    , load(manager.AddPersistenceLoadEventHandler(
          [this](IControlManager::PersistenceLoadOpState state) { OnLoad(state); })) {
    for (const std::string& id : manager.List()) {
        IControlInstance& instance = manager.GetInstance(id);
        services[id].hashes = HashesOf(instance);
        services[id].isEnabled = instance.IsEnabled();
    }
}

Revisions::~Revisions() {
    Vor::CleanUp([this] { manager.RemovePersistenceLoadEventHandler(load); });
}

std::optional<std::string> Revisions::TagOf(const std::string& path) const {
    try {
        const auto revision = RevisionOf(path);
        return revision ? std::optional('"' + boot + '-' + std::to_string(*revision) + '"') : std::nullopt;
    } catch (const Vor::Exception&) {
        return std::nullopt; // not a path
    }
}

std::optional<std::uint64_t> Revisions::RevisionOf(const std::string& path) const {
    std::vector<std::string> steps;
    for (const std::string_view step : Path::Split(path)) {
        steps.push_back(Path::Decode(step));
    }
    if (tools != nullptr && steps.size() == 3 && steps[0] == "sensor" && steps[1] == "tools") {
        const Tool* const tool = tools->Find(steps[2]);
        return tool == nullptr ? std::nullopt : std::optional(tool->revision);
    }
    const bool isOfService = steps.size() >= 2 && steps[0] == "controls" && !IsOfFigures(steps);
    const auto service = isOfService ? services.find(steps[1]) : services.end();
    if (service == services.end()) {
        return std::nullopt;
    }
    return service->second.revision + *service->second.deviceChanges;
}

// What a load has changed is compared with once it has ended, whatever that is.
void Revisions::OnLoad(IControlManager::PersistenceLoadOpState state) {
    loading = state == IControlManager::PersistenceLoadOpState::Begin;
    if (loading) {
        return;
    }
    for (auto& [id, service] : services) {
        service.hashes = HashesOf(manager.GetInstance(id));
        ++service.revision;
    }
}

// A start that fails again as before, which is tried every few seconds, changes nothing, nor does a stop of a service
// that is stopped.
void Revisions::OnEnabled(const IControlInstance& instance) {
    Service& service = services.at(instance.Id());
    const auto failure = instance.LastEnableFailure();
    const auto before = std::exchange(service.failure, failure ? std::optional(failure->text) : std::nullopt);
    const bool wasEnabled = std::exchange(service.isEnabled, instance.IsEnabled());
    const bool isStartedOrStopped = !failure && (service.isEnabled || wasEnabled);
    if (loading || (before == service.failure && !isStartedOrStopped)) {
        return;
    }
    ++service.revision;
    startedOrStopped.Raise(Path::Format("/controls/:protocol", {instance.Id()}));
}

void Revisions::Compare(const std::string& id, const std::string& part, const Hash& hash) {
    if (loading) {
        return;
    }
    Service& service = services.at(id);
    const std::uint64_t now = hash();
    if (std::exchange(service.hashes[part], now) != now) {
        ++service.revision;
    }
}

Revisions::Hashes Revisions::HashesOf(IControlInstance& instance) {
    Hashes hashes;
    hashes[ParametersPart] = ParametersHash(instance);
    hashes[OutputsPart] = OutputsHash(instance);
    if (instance.HasDeviceManager()) {
        hashes[DevicesPart] = DevicesHash(instance);
    }
    if (instance.HasRegisterAssemblyGroup()) {
        for (const std::string& assemblyId : instance.RegisterAssemblyList()) {
            hashes[AssemblyPart(assemblyId)] = AssemblyHash(instance, assemblyId);
        }
    }
    return hashes;
}

} // namespace Sensor::Resources
