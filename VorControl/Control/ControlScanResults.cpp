#include "VorControl/Control/ControlScanResults.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "VorCore/ResultHub.h"
#include "VorMsg/ResultSet.h"

#include <algorithm>
#include <utility>

namespace VorControl {

namespace {

void AddShared(void* filtered, ResultItem item) {
    const yMsgInfo msgInfo = yObject_Share(ResultItem_MsgInfo(item));
    const ResultInfo resultInfo = yObject_Share(ResultItem_ResultInfo(item));
    if (const yStatus status = ResultSet_Add(filtered, msgInfo, resultInfo, 0); status != yOK) {
        yObject_Release(msgInfo);
        yObject_Release(resultInfo);
        Vor::Throw(status);
    }
}

/// In the order of a map that may be large, where each insertion is cheap; texts with the same key in their own order.
std::vector<const std::string*> InOrderOfKeys(const std::vector<std::string>& ids) {
    std::vector<std::pair<unsigned long, const std::string*>> sorted;
    sorted.reserve(ids.size());
    for (const auto& id : ids) {
        sorted.emplace_back(ResultInfo_IdOfText(id), &id);
    }
    std::ranges::sort(sorted);
    std::vector<const std::string*> texts;
    texts.reserve(sorted.size());
    for (const auto& [key, id] : sorted) {
        texts.push_back(id);
    }
    return texts;
}

} // namespace

ControlScanResults::ControlScanResults(VorCore::ResultHub* hub, void* allocator)
    : allocator(allocator)
    , resultHub(hub) {
    Vor::ThrowIfFailed(yLock_Construct(outputMapLock.Out()));
    Vor::ThrowIfFailed(yLock_Construct(dispatcherLock.Out()));
    if (resultHub == nullptr) {
        Vor::LogWarning("No resultHub to listen to.");
        return;
    }
    hubCallbackId = resultHub->AddResultHandler([this](void* resultSet) { ProcessResultSet(resultSet); });
    Vor::LogInfo("ControlScanResults constructed.");
}

ControlScanResults::~ControlScanResults() {
    if (resultHub == nullptr) {
        return;
    }
    Vor::CleanUp([this] { resultHub->RemoveResultHandler(hubCallbackId); });
}

Vor::Event<void*>::CallbackId ControlScanResults::AddResultHandler(const std::string& serviceId,
                                                                   std::function<void(void*)> handler) {
    Vor::Event<void*>::CallbackId id;
    {
        const Vor::Locker locker(dispatcherLock.Get());
        auto found = dispatchers.find(serviceId);
        if (found == dispatchers.end()) {
            dispatchers.emplace(
                serviceId, Receiver{std::make_shared<ControlScanResultsDispatcher>(allocator), FindMap(serviceId)});
            found = dispatchers.find(serviceId);
            if (found == dispatchers.end()) {
                Vor::Throw(yERROR_NOT_FOUND, "Failed to add new dispatcher of protocol: %s.", serviceId);
            }
        }
        id = found->second.dispatcher->AddResultHandler(std::move(handler));
    }
    Vor::LogInfo("ControlScanResults::AddResultHandler new handler registered for protocol: %s", serviceId);
    return id;
}

void ControlScanResults::RemoveResultHandler(const std::string& serviceId, Vor::Event<void*>::CallbackId& id) {
    {
        const Vor::Locker locker(dispatcherLock.Get());
        const auto found = dispatchers.find(serviceId);
        if (found == dispatchers.end()) {
            Vor::LogWarning("Failed to find dispatcher of protocol: %s.", serviceId);
            return;
        }
        found->second.dispatcher->RemoveResultHandler(id);
        if (found->second.dispatcher->ResultHandlerCount() == 0) {
            dispatchers.erase(found);
            Vor::LogInfo("ControlScanResults::dispatcher removed for protocol: %s", serviceId);
        }
    }
    Vor::LogInfo("ControlScanResults::RemoveResultHandler handler removed for protocol: %s", serviceId);
}

void ControlScanResults::ProcessResultSet(void* resultSet) {
    if (ResultSet_Count(resultSet) == 0) {
        return;
    }
    if (ResultSet_FromSimulation(resultSet)) {
        Vor::LogInfo("Simulation data filtered out.");
        return;
    }
    const Vor::Locker locker(dispatcherLock.Get());
    const Vor::Locker mapLocker(outputMapLock.Get());
    for (const auto& [serviceId, receiver] : dispatchers) {
        const auto& dispatcher = receiver.dispatcher;
        if (!dispatcher->ForwardScanResults()) {
            continue;
        }
        const auto forwarded =
            dispatcher->ScanResultsFiltering() ? Filter(receiver.passing, resultSet) : Vor::Object::Share(resultSet);
        if (ResultSet_Count(forwarded.Get()) != 0) {
            Dispatch(*dispatcher, forwarded.Get());
        }
    }
}

void ControlScanResults::UpdateOutputMap(const std::string& serviceId, const std::vector<std::string>& ids) {
    {
        const Vor::Locker locker(outputMapLock.Get());
        const auto last = outputIds.find(serviceId);
        if (last != outputIds.end() && last->second == ids) {
            return;
        }
    }
    OutputMap next;
    for (const std::string* const id : InOrderOfKeys(ids)) {
        AddToMap(next, *id);
    }
    const Vor::Locker locker(outputMapLock.Get());
    FindMap(serviceId).swap(next);
    outputIds[serviceId] = ids;
}

void ControlScanResults::SetForwardScanResultsToProtocol(const std::string& serviceId, bool enable) {
    const Vor::Locker locker(dispatcherLock.Get());
    const auto found = dispatchers.find(serviceId);
    if (found == dispatchers.end()) {
        Vor::LogError("Cannot set scan results forwarding until protocol %s is enabled", serviceId);
        return;
    }
    found->second.dispatcher->SetForwardScanResults(enable);
}

void ControlScanResults::SetScanResultsFiltering(const std::string& serviceId, bool enable) {
    const Vor::Locker locker(dispatcherLock.Get());
    const auto found = dispatchers.find(serviceId);
    if (found == dispatchers.end()) {
        Vor::LogError("Cannot set scan results filtering until protocol %s is enabled", serviceId);
        return;
    }
    found->second.dispatcher->SetScanResultsFiltering(enable);
}

std::map<std::string, std::size_t> ControlScanResults::QueuedCounts() const {
    std::map<std::string, std::size_t> counts;
    const Vor::Locker locker(dispatcherLock.Get());
    for (const auto& [serviceId, receiver] : dispatchers) {
        counts.emplace(serviceId, receiver.dispatcher->QueuedCount());
    }
    return counts;
}

void ControlScanResults::AddToMap(OutputMap& map, std::string id) {
    const unsigned long key = ResultInfo_IdOfText(id);
    map.emplace_hint(map.end(), key, std::move(id));
}

ControlScanResults::OutputMap& ControlScanResults::FindMap(const std::string& serviceId) {
    const Vor::Locker locker(outputMapLock.Get());
    auto found = outputMaps.find(serviceId);
    if (found == outputMaps.end()) {
        outputMaps.emplace(serviceId, OutputMap());
        found = outputMaps.find(serviceId);
        if (found == outputMaps.end()) {
            Vor::LogError("Failed to add new map of protocol: %s", serviceId);
            Vor::Throw(yERROR_NOT_FOUND, "Failed to add new map of protocol: %s", serviceId);
        }
    }
    return found->second;
}

Vor::Object ControlScanResults::Filter(const OutputMap& passing, void* resultSet) {
    Vor::Object filtered;
    if (passing.empty()) {
        return filtered;
    }
    const std::size_t count = ResultSet_Count(resultSet);
    Vor::ThrowIfFailed(ResultSet_Construct(filtered.Out(), allocator, std::min(count, passing.size())));
    for (std::size_t index = 0; index < count; ++index) {
        const ResultItem item = ResultSet_At(resultSet, index);
        if (passing.contains(ResultInfo_NumericId(ResultItem_ResultInfo(item)))) {
            AddShared(filtered.Get(), item);
        }
    }
    return filtered;
}

void ControlScanResults::Dispatch(IControlScanResultsDispatcher& dispatcher, void* resultSet) {
    dispatcher.AddResult(resultSet);
}

} // namespace VorControl
