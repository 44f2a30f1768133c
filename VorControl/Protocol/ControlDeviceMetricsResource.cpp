#include "VorControl/Protocol/ControlDeviceMetricsResource.h"

#include "VorControl/Protocol/RequiredKey.h"

namespace VorControl::Protocol {

ControlDeviceMetricsResource::ControlDeviceMetricsResource(Reporter& reporter, IControlManager& manager)
    : ControlMetricsResourceBase(reporter)
    , deviceRemovedHandlers(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddDeviceRemovedEventHandler(
                  handlers.Guarded([this](const std::string& protocolId, const std::string& deviceId, bool) {
                      SelectedDeviceRemovedEventHandler(protocolId, deviceId);
                  }));
          },
          "Exception thrown while adding device removed event handlers",
          &IControlInstance::RemoveDeviceRemovedEventHandler,
          "Exception thrown while removing device removed event handlers") {}

ControlMetricsKey ControlDeviceMetricsResource::PopulateMetricsKey(const VorApi::RequestInfoEx& request) const {
    return PopulateMetricsKey(static_cast<const VorApi::RequestInfo&>(request));
}

ControlMetricsKey ControlDeviceMetricsResource::PopulateMetricsKey(const VorApi::RequestInfo& request) const {
    const std::string& protocol = RequiredKey(request, "protocol", MissingProtocol);
    const std::string& device = RequiredKey(request, "device", "Missing device id in request");
    return ControlMetricsKey(protocol, device, RequiredKey(request, "port", "Missing port id in request"));
}

void ControlDeviceMetricsResource::SelectedDeviceRemovedEventHandler(const std::string& protocolId,
                                                                     const std::string& deviceId) {
    runner.Run([this, protocolId, deviceId] { AbortAllDeviceStreams(protocolId, deviceId); });
}

void ControlDeviceMetricsResource::AbortAllDeviceStreams(const std::string& protocolId, const std::string& deviceId) {
    AbortStreams(
        [&](const ControlMetricsKey& key) { return key.ProtocolName() == protocolId && key.DeviceId() == deviceId; });
}

} // namespace VorControl::Protocol
