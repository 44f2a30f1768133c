#pragma once

#include "Vor/AsyncRunner.h"
#include "VorApi/Handle.h"
#include "VorApi/Threads/MsgQueue.h"
#include "VorControl/Control/IControlDataCache.h"
#include "yApi/yLock.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace VorControl {

/// Keeps the last good copy of each state, and at most one query of each kind on its way to the main loop. A query that
/// comes late fills the copy for the next call. Nobody may be in a call when the object goes.
class ControlDataCache : public IControlDataCache {
public:
    /// Both interfaces outlive the object. They are called on the main loop only.
    ControlDataCache(IControlSystemInterface& systemInterface, IControlScanEngineInterface& scanEngineInterface);
    ~ControlDataCache() override;

    ControlDataCache(const ControlDataCache&) = delete;
    ControlDataCache& operator=(const ControlDataCache&) = delete;

    IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) override;
    IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                              unsigned long long timeout) override;

private:
    using Lock = Vor::Handle<yLock, yLock_Destroy>;

    const std::uint64_t systemQueueMaxCount = 1;
    const std::uint64_t scannerQueueMaxCount = 1;
    IControlSystemInterface& systemInterface;
    IControlScanEngineInterface& scanEngineInterface;
    std::unique_ptr<Vor::AsyncRunner> asyncRunner;
    /// Guards `cachedSystemStats`, for a copy only. A leaf.
    Lock systemLock;
    IControlSystemInterface::SystemStats cachedSystemStats;
    Vor::MsgQueue<IControlSystemInterface::SystemStats> systemStatsQueue;
    /// Guards `cachedScannerInfo`, for a copy only. A leaf.
    Lock scannerLock;
    IControlScanEngineInterface::ScannerStateInfo cachedScannerInfo;
    Vor::MsgQueue<IControlScanEngineInterface::ScannerStateInfo> scannerInfoQueue;
    std::atomic<std::int32_t> systemStatsInProgress{0};
    std::atomic<std::int32_t> scannerInfoInProgress{0};

    void UpdateSystemStatsCache(unsigned long long timeout);
    void GetLatestSystemStats();
    void QuerySystemStats();
    bool SystemStatsOperationBegin();
    void SystemStatsOperationFinish();
    void CopyDataFromSystemCache(IControlSystemInterface::SystemStats& out);

    void UpdateScannerInfoCache(unsigned long long timeout);
    void GetLatestScannerInfo(const std::string& scannerId);
    void QueryScannerInfo(const std::string& scannerId);
    bool ScannerInfoOperationBegin();
    void ScannerInfoOperationFinish();
    void CopyDataFromScannerCache(const std::string& scannerId, IControlScanEngineInterface::ScannerStateInfo& out);
};

} // namespace VorControl
