#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace Vor {

/// The main loop itself, one for the process. It outlives static objects.
class LoopCore {
public:
    using Time = std::chrono::steady_clock::time_point;
    /// When a timer is due, and its number among those of the same time.
    using TimerKey = std::pair<Time, std::uint64_t>;

    static LoopCore& Instance();

    /// Queues a call; calls run in the order in which they were queued, from whatever thread.
    void Post(std::function<void()> call);

    /// Runs the call and logs what it throws.
    static void CallAndLogFailure(const std::function<void()>& call);

    Time Now() const;
    /// The duration, limited to about ten years so that it can be added to the clock's time.
    static std::chrono::microseconds Duration(unsigned long long microseconds);
    TimerKey AddTimer(Time due, std::function<void()> call);
    void RemoveTimer(const TimerKey& key);

    /// Waits until `done`, which is called with the wait's mutex held, is true, or the loop's clock reaches `deadline`;
    /// the result is that of `done`.
    bool WaitUntil(Time deadline, const std::function<bool()>& done);
    /// Runs `change` with the wait's mutex held and wakes the waiters, which check their conditions again.
    void Signal(const std::function<void()>& change);

    bool OnThread() const;

    /// Calls that wait to be run, timers aside. From any thread.
    std::size_t QueuedCount() const;

    /// The application's side; see MainLoop. Claim throws -987 when the loop has an owner.
    void Claim(bool manual);
    void Unclaim();
    void Run();
    void Stop();
    bool Step();
    std::size_t RunReady();
    std::size_t Advance(std::chrono::microseconds time);
    void Elapse(std::chrono::microseconds time);
    bool WaitReady(std::chrono::milliseconds deadline);

    LoopCore(const LoopCore&) = delete;
    LoopCore& operator=(const LoopCore&) = delete;

private:
    struct Engine;

    LoopCore();
    ~LoopCore() = delete;

    void BecomeLoopThread();
    void ArmWakeUp();
    void RunDueTimers();

    const std::unique_ptr<Engine> engine;

    /// Guards the timers, the clock's mode and time, and the owner's flags. No other lock is taken while it is held.
    mutable std::mutex mutex;
    std::map<TimerKey, std::function<void()>> timers;
    std::uint64_t lastTimer = 0;
    bool claimed = false;
    bool manual = false;
    Time manualNow;

    /// Held while waiters check what they wait for; ranks before `mutex`.
    std::mutex waitMutex;
    std::condition_variable waitChanged;
};

} // namespace Vor
