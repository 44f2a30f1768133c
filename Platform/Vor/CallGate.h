#pragma once

#include <condition_variable>
#include <mutex>

namespace Vor {

/// Admits calls on the main loop until it is closed.
class CallGate {
public:
    /// A call's passage; false when the gate is closed, and the call must not be made then.
    class Passage {
    public:
        explicit Passage(CallGate& gate);
        ~Passage();
        Passage(const Passage&) = delete;
        Passage& operator=(const Passage&) = delete;

        explicit operator bool() const { return passed; }

    private:
        CallGate& gate;
        const bool passed;
    };

    /// Afterwards no call is admitted and none runs. On the main loop itself it doesn't wait for a running one.
    void Close();
    /// Waits as Close does, without closing the gate.
    void WaitIdle();

private:
    void WaitIdle(std::unique_lock<std::mutex>& lock);

    /// Guards the members below, for a few instructions. No other lock is taken while it is held.
    std::mutex mutex;
    std::condition_variable ended; ///< a call ended
    bool closed = false;
    int running = 0;
};

} // namespace Vor
