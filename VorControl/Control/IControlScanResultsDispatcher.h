#pragma once

#include "VorApi/Event.h"

#include <cstddef>
#include <functional>

namespace VorControl {

/// One service's stage of the result flow: collects result sets and hands them to the handlers in batches.
class IControlScanResultsDispatcher {
public:
    virtual ~IControlScanResultsDispatcher() = default;

    /// The handler gets a `yArrayList` of `ResultSet`, valid for the call only.
    virtual Vor::Event<void*>::CallbackId AddResultHandler(std::function<void(void*)> handler) = 0;
    /// Waits for a batch that is being handled, unless called by its handler.
    virtual void RemoveResultHandler(Vor::Event<void*>::CallbackId& id) = 0;

    /// Queues a `ResultSet`, with a share of its own. Never waits for a handler.
    virtual void AddResult(void* resultSet) = 0;

    virtual std::size_t ResultHandlerCount() = 0;

    /// `yERROR_STATE` while started.
    virtual void Start() = 0;
    /// Waits for a running handler and discards what is queued. Does nothing while stopped. Not for handlers.
    virtual void Stop() = 0;

    virtual void SetForwardScanResults(bool enable) = 0;
    virtual bool ForwardScanResults() const = 0;
    virtual void SetScanResultsFiltering(bool enable) = 0;
    virtual bool ScanResultsFiltering() const = 0;
};

} // namespace VorControl
