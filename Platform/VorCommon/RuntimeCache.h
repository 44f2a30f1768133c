#pragma once

#include "VorCommon/IRuntimeCache.h"

#include <atomic>

namespace VorCommon {

class RuntimeCache final : public IRuntimeCache {
public:
    /// The main loop counts as blocked while one of these lives. Several may live at a time.
    class MainLoopBlock {
    public:
        explicit MainLoopBlock(RuntimeCache& cache);
        ~MainLoopBlock();
        MainLoopBlock(const MainLoopBlock&) = delete;
        MainLoopBlock& operator=(const MainLoopBlock&) = delete;

    private:
        RuntimeCache& cache;
    };

    ServiceState ProfinetServiceRunningState() const override;
    void SetProfinetServiceRunningState(ServiceState state) override;
    bool IsMainLoopBlocked() const override;

private:
    std::atomic<ServiceState> profinetState{ServiceState::Stopped};
    std::atomic<int> blocks{0};
};

} // namespace VorCommon
