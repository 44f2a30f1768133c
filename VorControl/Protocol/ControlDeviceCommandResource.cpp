#include "VorControl/Protocol/ControlDeviceCommandResource.h"

#include "Vor/DocumentValidation.h"
#include "VorControl/Control/ControlDeviceCommandTarget.h"
#include "VorControl/Control/ControlDevicePort.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Protocol/DeviceAccess.h"
#include "yApi/yStatus.h"

#include <exception>
#include <memory>

#include <nlohmann/json.hpp>

namespace VorControl::Protocol {

using VorApi::VorDataTree;

void ControlDeviceCommandResource::Document(const VorApi::RequestInfoEx&, VorApi::ResponseInfoEx&, VorDataTree&) {
    Vor::Throw(yERROR_UNIMPLEMENTED);
}

VorDataTree ControlDeviceCommandResource::Invoke(const VorApi::RequestInfoEx& request, const VorDataTree& data) {
    const IControlInstance& instance = RequiredInstance(request);
    const std::string& deviceId = RequiredKey(request, "device");
    const std::string& portId = RequiredKey(request, "port");
    const std::string& command = RequiredKey(request, "command");
    VorCommon::ICommandTarget& target = RequiredDeviceManager(instance).DeviceCommandTarget();
    const std::shared_ptr<Vor::Params::Group> group = target.GetCommandParams(command);
    auto& arguments = dynamic_cast<ControlDevicesCommandTriggerDigitalOutputProperties&>(*group);
    if (!data.Contains("parameters")) {
        Vor::Throw(yERROR_PARAMETER);
    }
    Vor::Properties::DeserializeDocument(arguments, data["parameters"].ToJson(), "/parameters");
    arguments.deviceId = deviceId;
    arguments.port = portId;
    return ResultDocument(target.InvokeCommand(command, arguments), request);
}

bool ControlDeviceCommandResource::IsCommand(const VorApi::RequestInfoEx& request) const {
    try {
        IControlDeviceManager& manager = RequiredDeviceManager(RequiredInstance(request));
        RequiredPort(manager, request.FindKey("device"), RequiredKey(request, "port"));
        return manager.DeviceCommandTarget().IsCommandSupported(RequiredKey(request, "command"));
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace VorControl::Protocol
