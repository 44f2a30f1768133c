#pragma once

#include "VorApi/Handle.h"
#include "VorApi/Threads/LockedEvent.h"
#include "VorApi/Threads/NamedThread.h"
#include "VorControl/Control/IControlScanResultsDispatcher.h"
#include "yApi/yArrayList.h"
#include "yApi/yLock.h"
#include "yApi/yStatus.h"

#include <atomic>
#include <cstdint>

namespace VorControl {

/// Runs from construction to destruction. Its thread, "CtrlScnRstDisp", hands over in each cycle what came in during
/// the one before, and then pauses for `sleepPeriod`. Nothing is dropped while it runs: the lists grow without limit. A
/// `Vor::Exception` of a handler keeps the later handlers from that batch and is logged; any other exception ends the
/// thread, after which results pile up until `Stop`.
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

private:
    using ResultList = Vor::Handle<yArrayList, yArrayList_Destroy>;

    const std::uint64_t sleepPeriod = 500; ///< microseconds
    const std::uint64_t listCapacity = 100;
    Vor::NamedThread thread;
    ResultList incomingResults;
    ResultList dispatchResults; ///< the thread's own while it runs
    /// Guards which list is the incoming one, and appending to it. Innermost: no handler runs while it is held.
    Vor::Handle<yLock, yLock_Destroy> listLock;
    Vor::LockedEvent<void*> resultEvent;
    std::atomic<bool> running = false;
    std::atomic<bool> forwardScanResults = false;
    std::atomic<bool> scanResultsFiltering = true;

    yStatus Run();
    void Dispatch();
    void CallHandlers();
};

} // namespace VorControl
