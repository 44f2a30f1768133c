#include "VorControl/Protocol/ControlAvailableDeviceResource.h"

#include "VorApi/Path.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Protocol/ControlDeviceProperties.h"
#include "yApi/yStatus.h"

namespace VorControl::Protocol {

ControlAvailableDeviceResource::ControlAvailableDeviceResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , listUpdates(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddAvailableDeviceListUpdatedEventHandler(handlers.Guarded(
                  [this](const std::string& serviceId) { OnAvailableDeviceListUpdatedHandler(serviceId); }));
          },
          "Exception thrown while adding available device list update event handlers",
          &IControlInstance::RemoveAvailableDeviceListUpdatedEventHandler,
          "Exception thrown while removing available device list update event handlers") {}

void ControlAvailableDeviceResource::OnAvailableDeviceListUpdatedHandler(const std::string& serviceId) {
    ResourceEventHandler(VorApi::Path::Format("/controls/:protocol/availableDevices", {serviceId}));
}

void ControlAvailableDeviceResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx&,
                                              VorApi::VorDataTree& data) {
    IControlDeviceManager& manager = RequiredInstance(request).DeviceManager();
    AvailableDeviceArrayProperty document;
    DeviceManagerLock lock(manager);
    const auto& available = manager.AvailableDevices();
    document.devices.Resize(available.size());
    unsigned long index = 0;
    for (const auto& entry : available) {
        document.devices.At(index++).Populate(entry.second);
    }
    lock.Unlock();
    NodeToVorDataTree(document, request, data, true);
}

void ControlAvailableDeviceResource::UpdateDocument(const VorApi::RequestInfo&, const nlohmann::json&) {
    Vor::Throw(yERROR_READ_ONLY);
}

} // namespace VorControl::Protocol
