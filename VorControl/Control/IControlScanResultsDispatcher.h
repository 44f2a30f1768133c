#pragma once

#include "VorApi/Event.h"

#include <cstddef>
#include <functional>

namespace VorControl {

/// One service's stage of the result flow: collects result sets and calls the handlers with them in batches.
class IControlScanResultsDispatcher {
public:
    virtual ~IControlScanResultsDispatcher() = default;

    /// The handler's argument is a `yArrayList` of `ResultSet`, valid only during the call.
    virtual Vor::Event<void*>::CallbackId AddResultHandler(std::function<void(void*)> handler) = 0;
    /// Waits for the handlers of a batch that is being processed, unless one of them makes the call.
    virtual void RemoveResultHandler(Vor::Event<void*>::CallbackId& id) = 0;

    /// Queues a `ResultSet`, with a share of its own. Never waits for a handler.
    virtual void AddResult(void* resultSet) = 0;

    virtual std::size_t ResultHandlerCount() = 0;

    /// Throws `yERROR_STATE` while it is started.
    virtual void Start() = 0;
    /// Waits for a running handler and discards what is queued. Does nothing while it is stopped. A handler must not
    /// call it.
    virtual void Stop() = 0;

    virtual void SetForwardScanResults(bool enable) = 0;
    virtual bool ForwardScanResults() const = 0;
    virtual void SetScanResultsFiltering(bool enable) = 0;
    virtual bool ScanResultsFiltering() const = 0;
};

} // namespace VorControl
