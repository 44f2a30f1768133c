#pragma once

#include "VorApi/Event.h"

#include <functional>
#include <string>
#include <vector>

namespace VorControl {

/// Carries the scan results from the result hub to the services. Any thread may call, with these exceptions: a
/// service's result handler must call neither `AddResultHandler`, `RemoveResultHandler`,
/// `SetForwardScanResultsToProtocol` nor `SetScanResultsFiltering`, nor anything that waits for a thread that does. A
/// removal waits for the handler that runs, and the others wait for the removal: they would wait for each other for
/// ever.
class IControlScanResults {
public:
    /// Adds a handler of the service's batches, which is called on a thread of the service's own. Its argument is a
    /// `yArrayList` of at least one `ResultSet`, in order of arrival, valid for the call only; a handler that keeps a
    /// set takes a share. The first handler starts with forwarding off and filtering on.
    virtual Vor::Event<void*>::CallbackId AddResultHandler(const std::string& serviceId,
                                                           std::function<void(void*)> handler) = 0;

    /// On return the handler doesn't run and never will again. With the last handler go the service's thread, both
    /// flags and the sets not delivered yet. Clears the id.
    virtual void RemoveResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id) = 0;

    /// For the result hub: forwards a `ResultSet`, on the caller's thread.
    virtual void ProcessResultSet(void* resultSet) = 0;

    /// Replaces the texts of the data sources that pass the service's filter. An empty list lets nothing pass. Kept
    /// when the handlers are gone.
    virtual void UpdateOutputMap(const std::string& serviceId, const std::vector<std::string>& ids) = 0;

    /// Whether the service gets anything at all. Without a handler of the service it is logged and lost.
    virtual void SetForwardScanResultsToProtocol(const std::string& serviceId, bool enable) = 0;

    /// Whether only results of the output map pass. Without a handler of the service it is logged and lost.
    virtual void SetScanResultsFiltering(const std::string& serviceId, bool enable) = 0;

protected:
    ~IControlScanResults() = default;
};

} // namespace VorControl
