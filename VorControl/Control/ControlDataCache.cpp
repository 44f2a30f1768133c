#include "VorControl/Control/ControlDataCache.h"

#include "Vor/AsyncLoop.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Threads/Locker.h"

#include <utility>

namespace VorControl {

namespace {

constexpr std::int32_t Idle = 0;
constexpr std::int32_t Taken = 1;

/// Moves the result of a query, if one comes in time, to its copy.
template <class Record>
void TakeResult(Vor::MsgQueue<Record>& queue, unsigned long long timeout, yLock lock, Record& copy,
                const Vor::LocatedFormat& failureText) {
    std::unique_ptr<Record> result;
    const yStatus status = queue.Remove(result, timeout);
    if (status == yERROR_TIMEOUT) {
        return;
    }
    if (status != yOK) {
        Vor::Throw(status, failureText, status);
    }
    const Vor::Locker locker(lock);
    copy = std::move(*result);
}

/// Takes a result that nobody fetched out of the queue and renews it.
template <class Record>
std::unique_ptr<Record> RenewResult(Vor::MsgQueue<Record>& queue, Record latest,
                                    const Vor::LocatedFormat& failureText) {
    std::unique_ptr<Record> result;
    const yStatus status = queue.Remove(result, 0);
    if (status == yERROR_TIMEOUT) {
        return std::make_unique<Record>(std::move(latest));
    }
    if (status != yOK) {
        Vor::Throw(status, failureText);
    }
    *result = std::move(latest);
    return result;
}

bool Begin(std::atomic<std::int32_t>& inProgress) {
    std::int32_t expected = Idle;
    return inProgress.compare_exchange_strong(expected, Taken);
}

/// On the main loop nothing can come while the caller waits there.
unsigned long long UsefulWait(unsigned long long timeout) {
    return Vor::AsyncLoop::OnMainLoop() ? 0 : timeout;
}

} // namespace

ControlDataCache::ControlDataCache(IControlSystemInterface& systemInterface,
                                   IControlScanEngineInterface& scanEngineInterface)
    : systemInterface(systemInterface)
    , scanEngineInterface(scanEngineInterface)
    , asyncRunner(std::make_unique<Vor::AsyncRunner>()) {
    Vor::ThrowIfFailed(yLock_Construct(systemLock.Out()));
    Vor::ThrowIfFailed(yLock_Construct(scannerLock.Out()));
    systemStatsQueue.SetMaxCount(systemQueueMaxCount);
    scannerInfoQueue.SetMaxCount(scannerQueueMaxCount);
}

ControlDataCache::~ControlDataCache() {
    asyncRunner.reset();
    Vor::CleanUp([this] {
        scannerInfoQueue.Clear();
        systemStatsQueue.Clear();
    });
}

IControlSystemInterface::SystemStats ControlDataCache::SystemStats(unsigned long long timeout) {
    UpdateSystemStatsCache(0);
    GetLatestSystemStats();
    UpdateSystemStatsCache(UsefulWait(timeout));
    IControlSystemInterface::SystemStats stats;
    CopyDataFromSystemCache(stats);
    return stats;
}

IControlScanEngineInterface::ScannerStateInfo ControlDataCache::ScannerInfo(const std::string& scannerId,
                                                                            unsigned long long timeout) {
    UpdateScannerInfoCache(0);
    GetLatestScannerInfo(scannerId);
    UpdateScannerInfoCache(UsefulWait(timeout));
    IControlScanEngineInterface::ScannerStateInfo info;
    CopyDataFromScannerCache(scannerId, info);
    return info;
}

void ControlDataCache::UpdateSystemStatsCache(unsigned long long timeout) {
    TakeResult(systemStatsQueue, timeout, systemLock.Get(), cachedSystemStats, "Error %d emptying system stats queue");
}

void ControlDataCache::GetLatestSystemStats() {
    if (Vor::AsyncLoop::OnMainLoop()) {
        QuerySystemStats();
    } else if (SystemStatsOperationBegin()) {
        try {
            asyncRunner->Run([this] { QuerySystemStats(); });
        } catch (...) {
            SystemStatsOperationFinish();
            throw;
        }
    }
}

void ControlDataCache::QuerySystemStats() {
    try {
        IControlSystemInterface::SystemStats stats;
        systemInterface.Stats(stats);
        auto result = RenewResult(systemStatsQueue, std::move(stats), "Failed to remove item from system stats queue");
        SystemStatsOperationFinish();
        systemStatsQueue.Add(std::move(result));
    } catch (const Vor::Exception& e) {
        Vor::LogThrown(e, "Exception getting system stats");
        SystemStatsOperationFinish();
    } catch (...) {
        SystemStatsOperationFinish();
        throw;
    }
}

bool ControlDataCache::SystemStatsOperationBegin() {
    return Begin(systemStatsInProgress);
}

void ControlDataCache::SystemStatsOperationFinish() {
    if (systemStatsInProgress.exchange(Idle) != Taken) {
        Vor::LogError("System stats operation ended but flag was not in the InProgress state");
    }
}

void ControlDataCache::CopyDataFromSystemCache(IControlSystemInterface::SystemStats& out) {
    const Vor::Locker locker(systemLock.Get());
    out = cachedSystemStats;
}

void ControlDataCache::UpdateScannerInfoCache(unsigned long long timeout) {
    TakeResult(scannerInfoQueue, timeout, scannerLock.Get(), cachedScannerInfo,
               "Error %d emptying scanner stats queue");
}

void ControlDataCache::GetLatestScannerInfo(const std::string& scannerId) {
    if (Vor::AsyncLoop::OnMainLoop()) {
        QueryScannerInfo(scannerId);
    } else if (ScannerInfoOperationBegin()) {
        try {
            asyncRunner->Run([this, scannerId] { QueryScannerInfo(scannerId); });
        } catch (...) {
            ScannerInfoOperationFinish();
            throw;
        }
    }
}

void ControlDataCache::QueryScannerInfo(const std::string& scannerId) {
    try {
        IControlScanEngineInterface::ScannerStateInfo info;
        scanEngineInterface.ScannerInfo(scannerId, info);
        auto result = RenewResult(scannerInfoQueue, std::move(info), "Failed to remove item from scanner stats queue");
        ScannerInfoOperationFinish();
        scannerInfoQueue.Add(std::move(result));
    } catch (const Vor::Exception&) {
        ScannerInfoOperationFinish();
    } catch (...) {
        ScannerInfoOperationFinish();
        throw;
    }
}

bool ControlDataCache::ScannerInfoOperationBegin() {
    return Begin(scannerInfoInProgress);
}

void ControlDataCache::ScannerInfoOperationFinish() {
    if (scannerInfoInProgress.exchange(Idle) != Taken) {
        Vor::LogError("Scanner info operation ended but flag was not in the InProgress state");
    }
}

void ControlDataCache::CopyDataFromScannerCache(const std::string& scannerId,
                                                IControlScanEngineInterface::ScannerStateInfo& out) {
    const Vor::Locker locker(scannerLock.Get());
    if (!scannerId.empty() && scannerId != cachedScannerInfo.id) {
        Vor::Throw(yERROR_NOT_FOUND, "No data found for scanner %s", scannerId);
    }
    out = cachedScannerInfo;
}

} // namespace VorControl
