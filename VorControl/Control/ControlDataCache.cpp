#include "VorControl/Control/ControlDataCache.h"

#include "Vor/AsyncLoop.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"
#include "yApi/yStatus.h"

#include <utility>

namespace VorControl {

namespace {

constexpr std::uint64_t QueueMaxCount = 1;

constexpr std::int32_t Idle = 0;
constexpr std::int32_t InProgress = 1;

/// A wait on the main loop itself is useless: the query runs there.
unsigned long long UsefulWait(unsigned long long timeout) {
    return Vor::AsyncLoop::OnMainLoop() ? 0 : timeout;
}

} // namespace

ControlDataCache::ControlDataCache(IControlSystemInterface& systemInterface,
                                   IControlScanEngineInterface& scanEngineInterface)
    : systemInterface(systemInterface)
    , scanEngineInterface(scanEngineInterface)
    , asyncRunner(std::make_unique<Vor::AsyncRunner>())
    , systemStats({.queryFailed = "Exception getting system stats",
                   .emptyingFailed = "Error %d emptying system stats queue",
                   .removalFailed = "Failed to remove item from system stats queue",
                   .wasNotInProgress = "System stats operation ended but flag was not in the InProgress state"})
    , scannerInfo({.queryFailed = nullptr,
                   .emptyingFailed = "Error %d emptying scanner stats queue",
                   .removalFailed = "Failed to remove item from scanner stats queue",
                   .wasNotInProgress = "Scanner info operation ended but flag was not in the InProgress state"}) {
    Vor::ThrowIfFailed(yLock_Construct(systemStats.lock.Out()));
    Vor::ThrowIfFailed(yLock_Construct(scannerInfo.lock.Out()));
    systemStats.queue.SetMaxCount(QueueMaxCount);
    scannerInfo.queue.SetMaxCount(QueueMaxCount);
}

ControlDataCache::~ControlDataCache() {
    asyncRunner.reset();
    Vor::CleanUp([this] {
        scannerInfo.queue.Clear();
        systemStats.queue.Clear();
    });
}

IControlSystemInterface::SystemStats ControlDataCache::SystemStats(unsigned long long timeout) {
    return systemStats.Get(
        *asyncRunner, [this](auto& stats) { systemInterface.Stats(stats); }, timeout);
}

IControlScanEngineInterface::ScannerStateInfo ControlDataCache::ScannerInfo(const std::string& scannerId,
                                                                            unsigned long long timeout) {
    auto info = scannerInfo.Get(
        *asyncRunner, [this, scannerId](auto& answer) { scanEngineInterface.ScannerInfo(scannerId, answer); }, timeout);
    if (!scannerId.empty() && scannerId != info.id) {
        Vor::Throw(yERROR_NOT_FOUND, "No data found for scanner %s", scannerId);
    }
    return info;
}

template <class Record>
Record ControlDataCache::State<Record>::Get(Vor::AsyncRunner& runner, const Query& query, unsigned long long timeout) {
    UpdateCache(0);
    GetLatest(runner, query);
    UpdateCache(UsefulWait(timeout));
    const Vor::Locker locker(lock.Get());
    return copy;
}

template <class Record>
void ControlDataCache::State<Record>::UpdateCache(unsigned long long timeout) {
    std::unique_ptr<Record> item;
    const yStatus status = queue.Remove(item, timeout);
    if (status == yERROR_TIMEOUT) {
        return;
    }
    if (status != yOK) {
        Vor::Throw(status, texts.emptyingFailed, status);
    }
    const Vor::Locker locker(lock.Get());
    copy = std::move(*item);
}

template <class Record>
void ControlDataCache::State<Record>::GetLatest(Vor::AsyncRunner& runner, const Query& query) {
    if (Vor::AsyncLoop::OnMainLoop()) {
        RunQuery(query);
    } else if (OperationBegin()) {
        try {
            runner.Run([this, query] { RunQuery(query); });
        } catch (...) {
            OperationFinish();
            throw;
        }
    }
}

template <class Record>
void ControlDataCache::State<Record>::RunQuery(const Query& query) {
    try {
        Record latest;
        query(latest);
        auto item = RenewItem(std::move(latest));
        OperationFinish();
        queue.Add(std::move(item));
    } catch (const Vor::Exception& e) {
        if (texts.queryFailed != nullptr) {
            Vor::LogThrown(e, texts.queryFailed);
        }
        OperationFinish();
    } catch (...) {
        OperationFinish();
        throw;
    }
}

template <class Record>
std::unique_ptr<Record> ControlDataCache::State<Record>::RenewItem(Record latest) {
    std::unique_ptr<Record> item;
    const yStatus status = queue.Remove(item, 0);
    if (status == yERROR_TIMEOUT) {
        return std::make_unique<Record>(std::move(latest));
    }
    if (status != yOK) {
        Vor::Throw(status, texts.removalFailed);
    }
    *item = std::move(latest);
    return item;
}

template <class Record>
bool ControlDataCache::State<Record>::OperationBegin() {
    std::int32_t expected = Idle;
    return inProgress.compare_exchange_strong(expected, InProgress);
}

template <class Record>
void ControlDataCache::State<Record>::OperationFinish() {
    if (inProgress.exchange(Idle) != InProgress) {
        Vor::LogError(texts.wasNotInProgress);
    }
}

} // namespace VorControl
