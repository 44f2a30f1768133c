#pragma once

#include "VorControl/Control/IControlSystemInterface.h"

namespace VorCommon {
class PersistManager;
}

namespace VorCore {
class Core;
namespace CoreMetrics {
class CoreMetricsGroup;
}
} // namespace VorCore

namespace VorPipe {
class PipeManager;
}

namespace VorControl {

class ControlSystemInterface : public IControlSystemInterface {
public:
    /// The objects outlive this one. An operation whose object is null throws yERROR_STATE.
    ControlSystemInterface(VorCore::Core* core, VorCommon::PersistManager* persistManager,
                           VorPipe::PipeManager* pipeManager);

    void Start() override;
    void Stop() override;
    void FactoryRestore() override;
    void Restart() override;
    void LoadJob(const std::string& name) override;
    void Stats(SystemStats& out) override;
    void SetNextIpConfig(const yIpConfig& config, bool flag) override;
    void BlinkLed() override;
    void AddDataSourceEventHandler(const DataSourceEventHandlerContainer& handlers,
                                   DataSourceEventCallbackIdContainer& ids) override;
    void RemoveDataSourceEventHandler(DataSourceEventCallbackIdContainer& ids) override;
    void DataSourceProperties(const std::string& name, ControlDataSourceProperties& out) override;
    void* LiveJob() override;
    long long LocalNodeDateTime() override;
    void SetLocalNodeDateTime(long long value) override;
    std::string LocalNodeNtpHost() override;
    void SetLocalNodeNtpHost(const std::string& host, bool flag) override;
    bool LocalNodeSyncTime(const std::string& host) override;

private:
    VorCore::Core* core;
    VorCommon::PersistManager* persistManager;
    VorPipe::PipeManager* pipeManager;

    static void ParseSystemMetrics(const VorCore::CoreMetrics::CoreMetricsGroup& group, SystemStats& out);
};

} // namespace VorControl
