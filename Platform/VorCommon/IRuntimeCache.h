#pragma once

namespace VorCommon {

/// Values that last as long as the system runs and that its processes share. Called on any thread.
class IRuntimeCache {
public:
    enum class ServiceState { Stopped = 0, Running = 1 };

    virtual ServiceState ProfinetServiceRunningState() const = 0;
    virtual void SetProfinetServiceRunningState(ServiceState state) = 0;
    /// True while the main loop itself waits: nobody may wait for it then.
    virtual bool IsMainLoopBlocked() const = 0;

protected:
    ~IRuntimeCache() = default;
};

} // namespace VorCommon
