#pragma once

#include "Vor/AsyncRunner.h"
#include "VorApi/Handle.h"
#include "VorApi/Threads/MsgQueue.h"
#include "VorControl/Control/IControlDataCache.h"
#include "yApi/yLock.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace VorControl {

/// Keeps the last good copy of each state, and has at most one query of each kind on its way to the main loop. An
/// answer that is too late for its caller fills the copy for the next call. No call may be running when the object is
/// destroyed.
class ControlDataCache : public IControlDataCache {
public:
    /// Both interfaces outlive the object, and are called on the main loop only. Throws the status of a lock or queue
    /// that can't be made.
    ControlDataCache(IControlSystemInterface& systemInterface, IControlScanEngineInterface& scanEngineInterface);
    ~ControlDataCache() override;

    ControlDataCache(const ControlDataCache&) = delete;
    ControlDataCache& operator=(const ControlDataCache&) = delete;

    IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) override;
    IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                              unsigned long long timeout) override;

private:
    /// What is logged or thrown of the queries of a state.
    struct Texts {
        const char* queryFailed;    ///< null: a failed query isn't logged
        const char* emptyingFailed; ///< has the status
        const char* removalFailed;
        const char* wasNotInProgress;
    };

    /// One state: the last good copy, and what the query that may be on its way needs.
    template <class Record>
    struct State {
        /// Fills a fresh record, on the main loop.
        using Query = std::function<void(Record&)>;

        explicit State(const Texts& texts)
            : texts(texts) {}

        Record Get(Vor::AsyncRunner& runner, const Query& query, unsigned long long timeout);
        /// Moves an answer to the copy if one comes in time.
        void UpdateCache(unsigned long long timeout);
        void GetLatest(Vor::AsyncRunner& runner, const Query& query);
        void RunQuery(const Query& query);
        /// The queue's item with the new record: the one that nobody fetched, or a new one.
        std::unique_ptr<Record> RenewItem(Record latest);
        bool OperationBegin();
        void OperationFinish();

        const Texts texts;
        /// Guards `copy`, for a copy only. A leaf.
        Vor::Handle<yLock, yLock_Destroy> lock;
        Record copy;
        Vor::MsgQueue<Record> queue;
        std::atomic<std::int32_t> inProgress{0}; ///< whether a query is on its way to the main loop: 0 or 1
    };

    IControlSystemInterface& systemInterface;
    IControlScanEngineInterface& scanEngineInterface;
    std::unique_ptr<Vor::AsyncRunner> asyncRunner;
    State<IControlSystemInterface::SystemStats> systemStats;
    State<IControlScanEngineInterface::ScannerStateInfo> scannerInfo;
};

} // namespace VorControl
