#pragma once

#include "Vor/AsyncRunner.h"
#include "VorApi/Threads/CallGuard.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Protocol/ControlMetricsResourceBase.h"
#include "VorControl/Protocol/ServiceSubscriptions.h"

#include <string>

namespace VorControl {
class IControlManager;
}

namespace VorControl::Protocol {

/// The figures of the ports of devices. When a device is removed, the streams of its ports are aborted.
class ControlDeviceMetricsResource : public ControlMetricsResourceBase {
public:
    /// The reporter and the manager outlive it.
    ControlDeviceMetricsResource(Reporter& reporter, IControlManager& manager);

protected:
    ControlMetricsKey PopulateMetricsKey(const VorApi::RequestInfoEx& request) const override;
    ControlMetricsKey PopulateMetricsKey(const VorApi::RequestInfo& request) const override;

private:
    /// From any thread.
    void SelectedDeviceRemovedEventHandler(const std::string& protocolId, const std::string& deviceId);
    void AbortAllDeviceStreams(const std::string& protocolId, const std::string& deviceId);

    Vor::AsyncRunner runner;
    Vor::CallGuard handlers;
    ServiceSubscriptions<IControlInstance::DeviceRemovedEvent::CallbackId> deviceRemovedHandlers;
};

} // namespace VorControl::Protocol
