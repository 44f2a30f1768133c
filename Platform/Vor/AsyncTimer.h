#pragma once

#include <functional>
#include <memory>

namespace Vor {

/// Calls back on the main loop. Its functions may be called from any thread; what the callback throws is logged, and a
/// repeating timer goes on.
class AsyncTimer {
public:
    explicit AsyncTimer(std::function<void(AsyncTimer&)> callback);
    /// As Stop. Legal inside the callback.
    ~AsyncTimer();
    AsyncTimer(const AsyncTimer&) = delete;
    AsyncTimer& operator=(const AsyncTimer&) = delete;

    /// Calls back after `period` microseconds: once, or again each period counted from when the last call was due.
    /// A timer that runs starts anew. Throws -997 for a repeating period of 0.
    void Start(unsigned long long period, bool oneShot);
    /// On return no callback runs or will run; it waits for a running one, but on the main loop itself it doesn't
    /// wait. Legal inside the callback.
    void Stop();

private:
    struct State;
    std::shared_ptr<State> state;
};

} // namespace Vor
