#pragma once

#include <functional>
#include <memory>

namespace Vor {

/// Runs closures on the main loop. Its functions may be called from any thread; what a closure of Run throws is logged
/// by the loop.
class AsyncRunner {
public:
    AsyncRunner();
    /// Drops what is queued and waits for a closure that is running, so nothing of this runner runs afterwards. On the
    /// main loop itself it doesn't wait. The caller must hold no lock that a running closure may need.
    ~AsyncRunner();
    AsyncRunner(const AsyncRunner&) = delete;
    AsyncRunner& operator=(const AsyncRunner&) = delete;

    /// Queues the closure and returns: it never runs inside this call, not even on the main loop. Closures run in the
    /// order of the calls. Throws when it can't be queued; the name of that fault is "AsyncRunner_Run".
    void Run(std::function<void()> call);

    /// Runs the closure on the main loop and returns when it is done; what it throws is thrown here. On the main loop
    /// it runs at once, inline. After `timeout` microseconds it throws -993; the closure still runs later if this
    /// runner lives, so it must own all it touches, and what it throws then is logged.
    void RunAndWait(std::function<void()> call, unsigned long long timeout);

private:
    struct State;
    std::shared_ptr<State> state;
};

} // namespace Vor
