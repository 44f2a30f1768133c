#pragma once

#include "VorApi/Event.h"
#include "VorApi/Params/Group.h"
#include "VorApi/Params/Value.h"
#include "VorCommon/ICommandTarget.h"

#include <string>

namespace VorControl {

/// The arguments of the command "trigger".
class ControlDevicesCommandTriggerDigitalOutputProperties : public Vor::Params::Group {
public:
    ControlDevicesCommandTriggerDigitalOutputProperties();

    Vor::Params::Value<std::string> deviceId; ///< of a device that the service uses
    Vor::Params::Value<std::string> port;     ///< its key, such as "port-0"
    Vor::Params::Value<long long> target;     ///< see VorCommon::IDigitalOutputProvider::SetOutputState
    Vor::Params::Value<bool> value;           ///< the state to set
};

/// The one command for devices, "trigger", which raises an event. Its result is an empty group, and the output is
/// switched later. It has no lock. Throws yERROR_NOT_FOUND for an unknown command, yERROR_PARAMETER for arguments that
/// aren't those of the command, and what a handler of the event throws.
class ControlDeviceCommandTarget : public VorCommon::ICommandTarget {
public:
    /// Arguments: device id, port, target, value.
    using TriggerDigitalOutputEvent = Vor::Event<std::string, std::string, long long, bool>;

    std::vector<VorCommon::CommandInfo> ListCommands() const override;
    std::shared_ptr<Vor::Params::Group> GetCommandParams(const std::string& id) const override;
    std::shared_ptr<Vor::Params::Group> InvokeCommand(const std::string& id, Vor::Params::Group& params) override;
    bool IsCommandSupported(const std::string& id) override;

    TriggerDigitalOutputEvent& GetTriggerDigitalOutputEvent() { return triggerDigitalOutputEvent; }

private:
    TriggerDigitalOutputEvent triggerDigitalOutputEvent;
};

} // namespace VorControl
