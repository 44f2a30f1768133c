#pragma once

#include "Tests/Support/CallLog.h"
#include "VorCommon/IDigitalOutputProvider.h"
#include "VorControl/Control/IControlDeviceOperations.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace Tests {

/// Records what is queued, and runs nothing.
class FakeDeviceOperations : public VorControl::IControlDeviceOperations, public CallLog {
public:
    OpEndEvent::CallbackId
    AddOpEndEventHandler(const std::string& clientId,
                         std::function<void(VorControl::ControlDeviceOperationsResults)> handler) override {
        Note("add " + clientId);
        return ended.Add(std::move(handler));
    }
    void RemoveOpEndEventHandler(const std::string& clientId, OpEndEvent::CallbackId& id) override {
        Note("remove " + clientId);
        ended.Remove(id);
    }
    bool FindAvailableSensors(const std::string& clientId) override {
        Note("find " + clientId);
        return true;
    }
    bool SetDigitalOutputState(const std::string& clientId, std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                               unsigned long long port, bool canDrop, bool state, long long target) override {
        Note("set " + clientId + " " + provider->Device().SerialNumber() + " " + std::to_string(port) + " " +
             Text(canDrop) + " " + Text(state) + " " + std::to_string(target));
        return true;
    }
    void ClearPendingOperations(VorControl::ControlDeviceActionId) override { Note("clear"); }

    OpEndEvent ended;
};

} // namespace Tests
