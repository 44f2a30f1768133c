#include "VorControl/Control/ControlDeviceCommandTarget.h"

#include "Vor/Exception.h"
#include "VorControl/Control/ControlText.h"
#include "yApi/yStatus.h"

namespace VorControl {

using Vor::Params::Group;

namespace {

constexpr const char* TriggerId = "trigger";

} // namespace

ControlDevicesCommandTriggerDigitalOutputProperties::ControlDevicesCommandTriggerDigitalOutputProperties()
    : Group("") {
    Register("deviceId", deviceId);
    Register("port", port);
    Register("target", target);
    Register("value", value);
}

std::vector<VorCommon::CommandInfo> ControlDeviceCommandTarget::ListCommands() const {
    return {VorCommon::CommandInfo(TriggerId, "Trigger")};
}

std::shared_ptr<Group> ControlDeviceCommandTarget::GetCommandParams(const std::string& id) const {
    if (id != TriggerId) {
        Vor::Throw(yERROR_NOT_FOUND, ControlText("The command '%s' does not exist. No parameters available"), id);
    }
    return std::make_shared<ControlDevicesCommandTriggerDigitalOutputProperties>();
}

std::shared_ptr<Group> ControlDeviceCommandTarget::InvokeCommand(const std::string& id, Group& params) {
    if (id != TriggerId) {
        Vor::Throw(yERROR_NOT_FOUND, ControlText("The command '%s' does not exist. Command ignored."), id);
    }
    const auto* const arguments = dynamic_cast<const ControlDevicesCommandTriggerDigitalOutputProperties*>(&params);
    if (arguments == nullptr) {
        Vor::Throw(yERROR_PARAMETER, "The arguments of '%s' must be those that its parameters have", id);
    }
    triggerDigitalOutputEvent.Raise(arguments->deviceId.Get(), arguments->port.Get(), arguments->target.Get(),
                                    arguments->value.Get());
    return std::make_shared<Group>("");
}

bool ControlDeviceCommandTarget::IsCommandSupported(const std::string& id) {
    return id == TriggerId;
}

} // namespace VorControl
