#pragma once

#include "Vor/AsyncLoop.h"
#include "VorControl/Control/IControlDeviceOperations.h"

#include <cstdint>
#include <memory>
#include <string>

namespace VorControl {

class IControlScanEngineInterface;

class ControlDeviceOperations : public IControlDeviceOperations, public Vor::IAsyncEventReceiver {
public:
    /// What is queued. Those that an operation doesn't have keep their defaults.
    struct OperationRequest {
        std::string clientId;
        ControlDeviceActionId actionId = ControlDeviceActionId::FindAvailableSensors;
        std::shared_ptr<VorCommon::IDigitalOutputProvider> provider = nullptr; ///< lives until the request has run
        unsigned long long port = 0;
        bool state = false;
        long long target = 0;
    };

    /// The interface outlives this object. Throws the status of a lock that can't be made.
    explicit ControlDeviceOperations(IControlScanEngineInterface& scanEngineInterface);
    /// Drops what is queued. Waits at most 200 ms for a call of a device, so that one that never returns doesn't hold
    /// up the end of the program. All handlers must have been removed.
    ~ControlDeviceOperations() override;

    ControlDeviceOperations(const ControlDeviceOperations&) = delete;
    ControlDeviceOperations& operator=(const ControlDeviceOperations&) = delete;

    OpEndEvent::CallbackId AddOpEndEventHandler(const std::string& clientId,
                                                std::function<void(ControlDeviceOperationsResults)> handler) override;
    void RemoveOpEndEventHandler(const std::string& clientId, OpEndEvent::CallbackId& id) override;
    bool FindAvailableSensors(const std::string& clientId) override;
    bool SetDigitalOutputState(const std::string& clientId, std::shared_ptr<VorCommon::IDigitalOutputProvider> provider,
                               unsigned long long port, bool canDrop, bool state, long long target) override;
    void ClearPendingOperations(ControlDeviceActionId actionId) override;

    /// Queues each of the operations above, and returns whether it did: with `canDrop` the queue may refuse a request
    /// for an output, and always refuses another one. If the thread that runs it can't be woken, what that throws is
    /// thrown and nothing is queued.
    bool RunSynchronousOp(OperationRequest request, bool canDrop);
    /// The requests for outputs that were accepted and haven't ended.
    std::uint32_t PendingDigitalOutputSetStateRequestCount() const;

    void ProcessEvent() override;

private:
    struct Work;

    Vor::AsyncLoop& loop;
    /// Shared with a call of a device that outlives this object.
    const std::shared_ptr<Work> work;
    Vor::AsyncLoop::ReceiverHandle receiver;
};

} // namespace VorControl
