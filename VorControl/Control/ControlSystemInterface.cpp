#include "VorControl/Control/ControlSystemInterface.h"

#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/PersistManager.h"
#include "VorCore/Core.h"
#include "VorCore/CoreMetrics/CoreMetricsGroup.h"
#include "VorPipe/PipeManager.h"

namespace VorControl {

namespace {

template <class T>
T& Existing(T* object) {
    if (object == nullptr) {
        Vor::Throw(yERROR_STATE);
    }
    return *object;
}

void Subscribe(Vor::LockedEvent<std::string>& event, const std::function<void(std::string)>& handler,
               Vor::LockedEvent<std::string>::CallbackId& id) {
    if (handler) {
        id = event.AddListener(handler);
    }
}

void Keep(const Vor::LockedEvent<std::string>::CallbackId& added, Vor::LockedEvent<std::string>::CallbackId& id) {
    if (added.IsSet()) {
        id = added;
    }
}

void Unsubscribe(Vor::LockedEvent<std::string>& event, Vor::LockedEvent<std::string>::CallbackId& id) {
    if (id.IsSet()) {
        event.RemoveListener(id);
    }
}

} // namespace

ControlSystemInterface::ControlSystemInterface(VorCore::Core* core, VorCommon::PersistManager* persistManager,
                                               VorPipe::PipeManager* pipeManager)
    : core(core)
    , persistManager(persistManager)
    , pipeManager(pipeManager) {}

void ControlSystemInterface::Start() {
    Existing(core).Start(true, false);
}

void ControlSystemInterface::Stop() {
    Existing(core).Stop(false, false);
}

void ControlSystemInterface::FactoryRestore() {
    Existing(core).FactoryRestore();
}

void ControlSystemInterface::Restart() {
    Existing(core).Restart();
}

void ControlSystemInterface::LoadJob(const std::string& name) {
    Existing(persistManager).LoadJob(name);
}

void ControlSystemInterface::Stats(SystemStats& out) {
    out.runState = Existing(core).GetRunState();
    out.loadedJob = Existing(persistManager).LoadedJob();
    ParseSystemMetrics(dynamic_cast<const VorCore::CoreMetrics::CoreMetricsGroup&>(core->GetMetricsReporter()), out);
}

void ControlSystemInterface::SetNextIpConfig(const yIpConfig& config, bool flag) {
    Existing(core).SetIpAddress({config}, flag);
}

void ControlSystemInterface::BlinkLed() {
    Existing(core).BlinkLed();
}

void ControlSystemInterface::AddDataSourceEventHandler(const DataSourceEventHandlerContainer& handlers,
                                                       DataSourceEventCallbackIdContainer& ids) {
    VorPipe::PipeManager& pipe = Existing(pipeManager);
    DataSourceEventCallbackIdContainer added;
    try {
        Subscribe(pipe.OutputCreatedEvent(), handlers.created, added.created);
        Subscribe(pipe.OutputDeletedEvent(), handlers.deleted, added.deleted);
        Subscribe(pipe.OutputUpdatedEvent(), handlers.updated, added.updated);
    } catch (...) {
        Vor::CleanUp([&] { RemoveDataSourceEventHandler(added); });
        throw;
    }
    Keep(added.created, ids.created);
    Keep(added.deleted, ids.deleted);
    Keep(added.updated, ids.updated);
}

void ControlSystemInterface::RemoveDataSourceEventHandler(DataSourceEventCallbackIdContainer& ids) {
    VorPipe::PipeManager& pipe = Existing(pipeManager);
    Unsubscribe(pipe.OutputCreatedEvent(), ids.created);
    Unsubscribe(pipe.OutputDeletedEvent(), ids.deleted);
    Unsubscribe(pipe.OutputUpdatedEvent(), ids.updated);
}

void ControlSystemInterface::DataSourceProperties(const std::string& name, ControlDataSourceProperties& out) {
    const VorPipe::PipeOutput output = Existing(pipeManager).Output(name);
    out.type = output.format.type;
    out.arrayed = output.format.arrayed;
    out.name = name;
    out.displayName = output.ownerName + " / " + output.displayName;
}

void* ControlSystemInterface::LiveJob() {
    return Existing(persistManager).LiveJob();
}

long long ControlSystemInterface::LocalNodeDateTime() {
    return Existing(core).LocalNodeDateTime();
}

void ControlSystemInterface::SetLocalNodeDateTime(long long value) {
    Existing(core).SetLocalNodeDateTime(value);
}

std::string ControlSystemInterface::LocalNodeNtpHost() {
    return Existing(core).LocalNodeNtpHost();
}

void ControlSystemInterface::SetLocalNodeNtpHost(const std::string& host, bool flag) {
    Existing(core).SetLocalNodeNtpHost(host, flag);
}

bool ControlSystemInterface::LocalNodeSyncTime(const std::string& host) {
    return Existing(core).LocalNodeSyncTime(host);
}

void ControlSystemInterface::ParseSystemMetrics(const VorCore::CoreMetrics::CoreMetricsGroup& group, SystemStats& out) {
    out.coreMetric0 = group.upTime.Get();
    out.coreMetric1 = group.cpuUsage.Get();
    out.networkIfStates.clear();
    out.networkIfCounts.clear();
    for (std::size_t i = 0; i < group.networkInterfaces.Count(); ++i) {
        const auto& interface = group.networkInterfaces.At(i);
        out.networkIfStates.push_back(static_cast<int>(interface.linkState.Get()));
        out.networkIfCounts.push_back(interface.linkSpeed.Get());
    }
    out.coreMetric3 = group.memoryCapacity.Get();
    out.coreMetric4 = group.memoryUsed.Get();
    out.coreMetric5 = group.memoryAvailable.Get();
    for (std::size_t i = 0; i < group.storageVolumes.Count(); ++i) {
        const auto& volume = group.storageVolumes.At(i);
        out.storageVolumes.push_back({volume.capacity.Get(), volume.used.Get(), volume.available.Get()});
    }
}

} // namespace VorControl
