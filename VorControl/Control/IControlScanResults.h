#pragma once

#include "VorApi/Event.h"

#include <functional>
#include <string>
#include <vector>

namespace VorControl {

/// Forwards the scan results from the result hub to the services. Any thread may call these functions, but a service's
/// result handler must not call `AddResultHandler`, `RemoveResultHandler`, `SetForwardScanResultsToProtocol` or
/// `SetScanResultsFiltering`, nor wait for a thread that does. A removal waits for the handler that is running, and the
/// other functions wait for the removal: that is a deadlock.
class IControlScanResults {
public:
    /// Adds a handler of the service's batches, which is called on a thread of this service. Its argument is a
    /// `yArrayList` of at least one `ResultSet`, in order of arrival, valid only during the call; a handler that keeps
    /// a set needs a share of it. When the first handler is added, forwarding is off and filtering is on.
    virtual Vor::Event<void*>::CallbackId AddResultHandler(const std::string& serviceId,
                                                           std::function<void(void*)> handler) = 0;

    /// On return the handler isn't running and will not be called again. The last removal also ends the service's
    /// thread and drops both flags and the sets that weren't delivered. Clears the id.
    virtual void RemoveResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id) = 0;

    /// For the result hub: forwards a `ResultSet`, on the caller's thread.
    virtual void ProcessResultSet(void* resultSet) = 0;

    /// Replaces the texts of the data sources that pass the service's filter. With an empty list none passes. The texts
    /// are kept when the handlers are removed.
    virtual void UpdateOutputMap(const std::string& serviceId, const std::vector<std::string>& ids) = 0;

    /// Whether results are forwarded to the service. Without a handler of the service the call is logged and has no
    /// effect.
    virtual void SetForwardScanResultsToProtocol(const std::string& serviceId, bool enable) = 0;

    /// Whether only results of the output map pass. Without a handler of the service the call is logged and has no
    /// effect.
    virtual void SetScanResultsFiltering(const std::string& serviceId, bool enable) = 0;

protected:
    ~IControlScanResults() = default;
};

} // namespace VorControl
