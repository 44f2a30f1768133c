#include "VorControl/Protocol/ControlDeviceResource.h"

#include "VorApi/AtScopeEnd.h"
#include "VorApi/Path.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Protocol/ControlDeviceProperties.h"
#include "VorControl/Protocol/DeviceAccess.h"
#include "yApi/yStatus.h"

#include <utility>

namespace VorControl::Protocol {

using VorApi::Path;
using VorApi::VorDataTree;

namespace {

constexpr const char* DevicesPath = "/controls/:protocol/devices";
constexpr const char* DevicePath = "/controls/:protocol/devices/:device";

constexpr const char* AddingFailed = "Exception thrown while adding device update event handlers";
constexpr const char* RemovingFailed = "Exception thrown while removing device update event handlers";

} // namespace

ControlDeviceResource::ControlDeviceResource(IControlManager& manager)
    : ControlResourceBase(manager)
    , removals(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddDeviceRemovedEventHandler(
                  handlers.Guarded([this](const std::string& serviceId, const std::string& deviceId, bool) {
                      SelectedDeviceRemovedEventHandler(serviceId, deviceId);
                  }));
          },
          AddingFailed, &IControlInstance::RemoveDeviceRemovedEventHandler, RemovingFailed)
    , updates(
          manager,
          [this](IControlInstance& instance) {
              return instance.AddDeviceUpdatedEventHandler(
                  handlers.Guarded([this](const std::string& serviceId, const std::string& deviceId, bool) {
                      SelectedDeviceUpdatedEventHandler(serviceId, deviceId);
                  }));
          },
          AddingFailed, &IControlInstance::RemoveDeviceUpdatedEventHandler, RemovingFailed) {}

void ControlDeviceResource::SelectedDeviceRemovedEventHandler(const std::string& serviceId,
                                                              const std::string& deviceId) {
    Notify(VorApi::Notification::Deleted, Path::Format(DevicePath, {serviceId, deviceId}));
}

void ControlDeviceResource::SelectedDeviceUpdatedEventHandler(const std::string& serviceId,
                                                              const std::string& deviceId) {
    Notify(VorApi::Notification::Changed,
           deviceId.empty() ? Path::Format(DevicesPath, {serviceId}) : Path::Format(DevicePath, {serviceId, deviceId}));
}

void ControlDeviceResource::Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                     VorDataTree& data) {
    if (request.FindKey("device") == nullptr) {
        ReadAll(request, response, data);
    } else {
        ReadOne(request, response, data);
    }
}

void ControlDeviceResource::ReadAll(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                    const VorDataTree& data) const {
    const IControlInstance& instance = RequiredInstance(request);
    IControlDeviceManager& manager = RequiredDeviceManager(instance);
    ControlDeviceListProperties document;
    DeviceManagerLock lock(manager);
    for (const auto& device : manager.SelectedDevices()) {
        response.Embed("item", Path::Format(DevicePath, {instance.Id(), device.first}), true, VorDataTree());
    }
    document.maxDeviceCount = manager.MaxSelectableDeviceCount();
    lock.Unlock();
    NodeToVorDataTree(document, request, data, true);
}

void ControlDeviceResource::ReadOne(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                                    const VorDataTree& data) const {
    const IControlInstance& instance = RequiredInstance(request);
    const std::string& deviceId = RequiredKey(request, "device", "Invalid device Id specified.");
    IControlDeviceManager& manager = RequiredDeviceManager(instance);
    ControlDeviceProperties document;
    DeviceManagerLock lock(manager);
    document.Populate(manager.SelectedDeviceProperties(deviceId));
    lock.Unlock();
    response.Embed("item", Path::Format("/controls/:protocol/devices/:device/ports", {instance.Id(), deviceId}), true,
                   VorDataTree());
    NodeToVorDataTree(document, request, data, true);
}

VorApi::IParentResource::Created ControlDeviceResource::Create(const VorApi::RequestInfo& request,
                                                               const nlohmann::json& json) {
    IControlInstance& instance = RequiredInstance(request);
    instance.BeginUpdateDeviceManager();
    Vor::AtScopeEnd updateEnd([&] { instance.EndUpdateDeviceManager(); });
    ControlDeviceCreationParam params;
    NodeFromJsonAndValidate(params, json);
    const std::string& engineId = params.engineId.Get();
    const std::string& serialNumber = params.serialNumber.Get();
    if (engineId.empty() || serialNumber.empty()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    std::string id = RequiredDeviceManager(instance).CreateSelectedDevice(engineId, serialNumber);
    updateEnd.End();
    std::string path = Path::Format(DevicePath, {instance.Id(), id});
    Notify(VorApi::Notification::Created, path);
    return {std::move(id), std::move(path)};
}

void ControlDeviceResource::Delete(const VorApi::RequestInfo& request) {
    IControlInstance& instance = RequiredInstance(request);
    instance.BeginUpdateDeviceManager();
    Vor::AtScopeEnd updateEnd([&] { instance.EndUpdateDeviceManager(); });
    const std::string& deviceId = RequiredKey(request, "device", "Invalid device id specified.");
    RequiredDeviceManager(instance).DeleteSelectedDevice(deviceId, false);
    updateEnd.End();
    Notify(VorApi::Notification::Deleted, Path::Format(DevicePath, {instance.Id(), deviceId}));
}

} // namespace VorControl::Protocol
