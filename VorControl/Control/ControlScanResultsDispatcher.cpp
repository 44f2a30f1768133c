#include "VorControl/Control/ControlScanResultsDispatcher.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/AtScopeEnd.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "VorMsg/ResultSet.h"
#include "yApi/yThread.h"

#include <exception>
#include <utility>

namespace VorControl {

ControlScanResultsDispatcher::ControlScanResultsDispatcher(void* allocator) {
    Vor::ThrowIfFailed(yLock_Construct(listLock.Out()));
    Vor::ThrowIfFailed(yArrayList_Construct(incomingResults.Out(), yType_ResultSet, listCapacity, allocator));
    Vor::ThrowIfFailed(yArrayList_Construct(dispatchResults.Out(), yType_ResultSet, listCapacity, allocator));
    Start();
}

ControlScanResultsDispatcher::~ControlScanResultsDispatcher() {
    Vor::CleanUp([this] { Stop(); });
    thread.Reset();
}

Vor::Event<void*>::CallbackId ControlScanResultsDispatcher::AddResultHandler(std::function<void(void*)> handler) {
    return resultEvent.AddListener(std::move(handler));
}

void ControlScanResultsDispatcher::RemoveResultHandler(Vor::Event<void*>::CallbackId& id) {
    resultEvent.RemoveListener(id);
}

void ControlScanResultsDispatcher::AddResult(void* resultSet) {
    const Vor::Locker locker(listLock.Get());
    Vor::ThrowIfFailed(yArrayList_Add(incomingResults.Get(), resultSet));
    yObject_Share(resultSet);
    queued.fetch_add(1, std::memory_order_relaxed);
}

std::size_t ControlScanResultsDispatcher::ResultHandlerCount() {
    return resultEvent.Count();
}

void ControlScanResultsDispatcher::Start() {
    if (running.load(std::memory_order_relaxed)) {
        Vor::Throw(yERROR_STATE);
    }
    running.store(true, std::memory_order_relaxed);
    try {
        thread = Vor::NamedThread("CtrlScnRstDisp", [this] { return Run(); });
    } catch (...) {
        running.store(false, std::memory_order_relaxed);
        throw;
    }
}

void ControlScanResultsDispatcher::Stop() {
    if (!running.load(std::memory_order_relaxed)) {
        return;
    }
    running.store(false, std::memory_order_relaxed);
    if (const yStatus exit = thread.Join(); exit != yOK) {
        Vor::LogInfo("ControlScanResultsDispatcher thread stopped with error:%d", exit);
    }
    thread.Reset();
    const Vor::Locker locker(listLock.Get());
    yArrayList_Purge(incomingResults.Get());
    yArrayList_Purge(dispatchResults.Get());
    queued.store(0, std::memory_order_relaxed);
}

void ControlScanResultsDispatcher::SetForwardScanResults(bool enable) {
    forwardScanResults.store(enable, std::memory_order_relaxed);
}

bool ControlScanResultsDispatcher::ForwardScanResults() const {
    return forwardScanResults.load(std::memory_order_relaxed);
}

void ControlScanResultsDispatcher::SetScanResultsFiltering(bool enable) {
    scanResultsFiltering.store(enable, std::memory_order_relaxed);
}

bool ControlScanResultsDispatcher::ScanResultsFiltering() const {
    return scanResultsFiltering.load(std::memory_order_relaxed);
}

yStatus ControlScanResultsDispatcher::Run() {
    try {
        while (running.load(std::memory_order_relaxed)) {
            Dispatch();
            Vor::ThrowIfFailed(yThread_Sleep(sleepPeriod));
        }
        return yOK;
    } catch (const Vor::Exception& exception) {
        Vor::LogThrown(exception, "EXCEPTION THROWN: ");
        return exception.Status();
    } catch (const std::exception& exception) {
        Vor::LogThrown(exception, "EXCEPTION THROWN: ");
        return yERROR;
    }
}

void ControlScanResultsDispatcher::Dispatch() {
    CallHandlers();
    const Vor::Locker locker(listLock.Get());
    std::swap(incomingResults, dispatchResults);
}

void ControlScanResultsDispatcher::CallHandlers() {
    const yArrayList batch = dispatchResults.Get();
    const std::size_t count = yArrayList_Count(batch);
    if (count == 0) {
        return;
    }
    const Vor::AtScopeEnd purge([this, batch, count] {
        yArrayList_Purge(batch);
        queued.fetch_sub(count, std::memory_order_relaxed);
    });
    try {
        resultEvent.Raise(batch);
    } catch (const Vor::Exception& exception) {
        Vor::LogThrown(exception, "EXCEPTION THROWN: ");
    }
}

} // namespace VorControl
