#pragma once

#include "VorApi/Event.h"
#include "VorControl/Control/ControlAvailableDeviceProp.h"
#include "yApi/yStatus.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace VorControl {

/// What can be asked of the devices.
enum class ControlDeviceActionId : std::uint8_t { FindAvailableSensors = 0, SetDigitalOutputState = 1 };

/// The end of an operation.
struct ControlDeviceOperationsResults {
    std::string clientId; ///< who asked for it
    ControlDeviceActionId actionId = ControlDeviceActionId::FindAvailableSensors;
    yStatus status = yERROR;
    /// Of FindAvailableSensors: the devices that the scan engines offer. Else, and after a failure, null.
    std::shared_ptr<std::vector<ControlAvailableDeviceProp>> devices = nullptr;
};

/// The queue of all work on devices, one for all services. An operation runs on the thread "DeviceLoop", one after the
/// other, and its caller doesn't wait. At its end the handlers of the caller's client id are called on that thread,
/// with yOK or another status. Any thread may call.
class IControlDeviceOperations {
public:
    using OpEndEvent = Vor::Event<ControlDeviceOperationsResults>;

    /// Adds a handler of the ends of a client's operations; nobody else is notified of them. Handlers are called in
    /// order of adding, with a lock held: a handler may queue operations, but must neither add handlers nor wait for a
    /// thread that adds or removes any. An empty function isn't added.
    virtual OpEndEvent::CallbackId
    AddOpEndEventHandler(const std::string& clientId, std::function<void(ControlDeviceOperationsResults)> handler) = 0;
    /// Clears the id. Waits for a running handler.
    virtual void RemoveOpEndEventHandler(const std::string& clientId, OpEndEvent::CallbackId& id) = 0;
    /// Returns true: this operation is never refused.
    virtual bool FindAvailableSensors(const std::string& clientId) = 0;
    /// Switches an output; see VorCommon::IDigitalOutputProvider. With `canDrop` it is refused, and false returned,
    /// while 20 requests or more wait for the device; without, any number may wait.
    virtual bool SetDigitalOutputState(const std::string& clientId,
                                       std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                                       unsigned long long port, bool canDrop, bool state, long long target) = 0;
    /// Drops the operations of all clients that haven't begun. Their ends aren't reported.
    virtual void ClearPendingOperations(ControlDeviceActionId actionId) = 0;

    virtual ~IControlDeviceOperations() = default;
};

} // namespace VorControl
