#pragma once

#include "VorApi/Handle.h"
#include "VorApi/Object.h"
#include "VorControl/Control/ControlScanResultsDispatcher.h"
#include "VorControl/Control/IControlScanResults.h"
#include "yApi/yLock.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorCore {
class ResultHub;
}

namespace VorControl {

/// The one subscriber of the result hub. Simulated results are forwarded to no service.
class ControlScanResults final : public IControlScanResults {
public:
    /// `hub` outlives the object; null means that there are no results. The result lists and the filtered sets are
    /// allocated with `allocator`.
    ControlScanResults(VorCore::ResultHub* hub, void* allocator);
    /// Waits until the hub's thread has left `ProcessResultSet`, then stops the services' threads.
    ~ControlScanResults();

    ControlScanResults(const ControlScanResults&) = delete;
    ControlScanResults& operator=(const ControlScanResults&) = delete;

    Vor::Event<void*>::CallbackId AddResultHandler(const std::string& serviceId,
                                                   std::function<void(void*)> handler) override;
    void RemoveResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id) override;
    void ProcessResultSet(void* resultSet) override;
    void UpdateOutputMap(const std::string& serviceId, const std::vector<std::string>& ids) override;
    void SetForwardScanResultsToProtocol(const std::string& serviceId, bool enable) override;
    void SetScanResultsFiltering(const std::string& serviceId, bool enable) override;

    /// Result sets of each started service, by its id, that it hasn't processed yet.
    std::map<std::string, std::size_t> QueuedCounts() const;

private:
    /// Numeric id of each data source that passes, and the text from which the id was computed.
    using OutputMap = std::map<unsigned long, std::string>;

    struct Receiver {
        std::shared_ptr<ControlScanResultsDispatcher> dispatcher;
        const OutputMap& passing; ///< the service's entry in `outputMaps`, found once instead of for each result set
    };

    void* const allocator;
    VorCore::ResultHub* const resultHub;
    Vor::Event<void*>::CallbackId hubCallbackId;
    /// Guards `outputMaps` and `outputIds`. Held while a result set is forwarded to all services. Ranks after
    /// `dispatcherLock`, before the locks of a dispatcher.
    Vor::Handle<yLock, yLock_Destroy> outputMapLock;
    std::map<std::string, OutputMap> outputMaps; ///< no entry is ever removed
    /// What `outputMaps` was made of: most updates of a map that may be large change nothing.
    std::map<std::string, std::vector<std::string>> outputIds;
    /// Guards `dispatchers`, and is held while a dispatcher is stopped. Ranks before `outputMapLock` and the locks of a
    /// dispatcher.
    Vor::Handle<yLock, yLock_Destroy> dispatcherLock;
    std::map<std::string, Receiver> dispatchers;

    static void AddToMap(OutputMap& map, std::string id);
    OutputMap& FindMap(const std::string& serviceId);

    /// The results that pass the map, or nothing when it is empty.
    Vor::Object Filter(const OutputMap& passing, void* resultSet);
    static void Dispatch(IControlScanResultsDispatcher& dispatcher, void* resultSet);
};

} // namespace VorControl
