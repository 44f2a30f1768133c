#pragma once

#include "VorApi/Handle.h"
#include "VorApi/Object.h"
#include "VorControl/Control/IControlScanResults.h"
#include "VorControl/Control/IControlScanResultsDispatcher.h"
#include "yApi/yLock.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VorCore {
class ResultHub;
}

namespace VorControl {

/// The one subscriber of the result hub. Simulated results are forwarded to no service.
class ControlScanResults : public IControlScanResults {
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

private:
    /// Numeric id of each data source that passes, and the text from which the id was computed.
    using OutputMap = std::map<unsigned long, std::string>;

    void* const allocator;
    VorCore::ResultHub* const resultHub;
    Vor::Event<void*>::CallbackId hubCallbackId;
    /// Guards `outputMaps` and `outputIds`. Ranks after `dispatcherLock`.
    Vor::Handle<yLock, yLock_Destroy> outputMapLock;
    std::map<std::string, OutputMap> outputMaps;
    /// What `outputMaps` was made of: most updates of a map that may be large change nothing.
    std::map<std::string, std::vector<std::string>> outputIds;
    /// Guards `dispatchers`, and is held while a dispatcher is stopped. Ranks before `outputMapLock` and the locks of a
    /// dispatcher.
    Vor::Handle<yLock, yLock_Destroy> dispatcherLock;
    std::map<std::string, std::shared_ptr<IControlScanResultsDispatcher>> dispatchers;

    static void AddToMap(OutputMap& map, std::string id);
    OutputMap& FindMap(const std::string& serviceId);

    /// The results of the service's output map, or nothing when the map is missing or empty.
    Vor::Object Filter(const std::string& serviceId, void* resultSet);
    static void Dispatch(std::shared_ptr<IControlScanResultsDispatcher> dispatcher, void* resultSet);
};

} // namespace VorControl
