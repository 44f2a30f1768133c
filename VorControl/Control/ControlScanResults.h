#pragma once

#include "VorApi/Handle.h"
#include "VorApi/Object.h"
#include "VorControl/Control/IControlScanResults.h"
#include "VorControl/Control/IControlScanResultsDispatcher.h"
#include "yApi/yLock.h"

#include <map>
#include <memory>
#include <string>

namespace VorCore {
class ResultHub;
}

namespace VorControl {

/// The one subscriber of the result hub. Simulated results reach no service.
class ControlScanResults : public IControlScanResults {
public:
    /// `hub` outlives the object; null means that no results come. `allocator` serves the result lists and the filtered
    /// sets.
    ControlScanResults(VorCore::ResultHub* hub, void* allocator);
    /// Waits until the hub's thread is out of `ProcessResultSet`, then stops the services' threads.
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
    /// Numeric id of each data source that passes, and the text that it was computed from.
    using OutputMap = std::map<unsigned long, std::string>;

    void* const allocator;
    VorCore::ResultHub* const resultHub;
    Vor::Event<void*>::CallbackId hubCallbackId;
    /// Guards `outputMaps`. Ranks behind `dispatcherLock`.
    Vor::Handle<yLock, yLock_Destroy> outputMapLock;
    std::map<std::string, OutputMap> outputMaps;
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
