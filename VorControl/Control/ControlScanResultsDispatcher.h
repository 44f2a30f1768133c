#pragma once

#include "VorApi/Handle.h"
#include "VorApi/Threads/LockedEvent.h"
#include "VorApi/Threads/NamedThread.h"
#include "VorControl/Control/IControlScanResultsDispatcher.h"
#include "yApi/yArrayList.h"
#include "yApi/yLock.h"
#include "yApi/yStatus.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace VorControl {

/// Runs from construction to destruction. In each cycle its thread, "CtrlScnRstDisp", calls the handlers with the
/// results of the cycle before, and then pauses for `sleepPeriod`. No result is dropped while it runs: the lists grow
/// without limit. After a `Vor::Exception` of a handler, which is logged, the later handlers don't get that batch. Any
/// other exception ends the thread, and results are collected without being processed until `Stop`.
class ControlScanResultsDispatcher : public IControlScanResultsDispatcher {
public:
    explicit ControlScanResultsDispatcher(void* allocator);
    ~ControlScanResultsDispatcher() override;

    ControlScanResultsDispatcher(const ControlScanResultsDispatcher&) = delete;
    ControlScanResultsDispatcher& operator=(const ControlScanResultsDispatcher&) = delete;

    Vor::Event<void*>::CallbackId AddResultHandler(std::function<void(void*)> handler) override;
    void RemoveResultHandler(Vor::Event<void*>::CallbackId& id) override;
    void AddResult(void* resultSet) override;
    std::size_t ResultHandlerCount() override;
    void Start() override;
    void Stop() override;
    void SetForwardScanResults(bool enable) override;
    bool ForwardScanResults() const override;
    void SetScanResultsFiltering(bool enable) override;
    bool ScanResultsFiltering() const override;

    /// Sets that were added and that the handlers haven't processed yet. From any thread.
    std::size_t QueuedCount() const { return queued.load(std::memory_order_relaxed); }

private:
    using ResultList = Vor::Handle<yArrayList, yArrayList_Destroy>;

    const std::uint64_t sleepPeriod = 500; ///< microseconds
    const std::uint64_t listCapacity = 100;
    Vor::NamedThread thread;
    ResultList incomingResults;
    ResultList dispatchResults; ///< used only by the thread while it runs
    /// Guards which list is the incoming one, and appends to it. Innermost: no handler runs while it is held.
    Vor::Handle<yLock, yLock_Destroy> listLock;
    Vor::LockedEvent<void*> resultEvent;
    std::atomic<bool> running = false;
    std::atomic<bool> forwardScanResults = false;
    std::atomic<bool> scanResultsFiltering = true;
    std::atomic<std::size_t> queued = 0;

    yStatus Run();
    void Dispatch();
    void CallHandlers();
};

} // namespace VorControl
