#pragma once

#include <condition_variable>
#include <mutex>

namespace Vor {

/// Lets calls on the main loop through until it is closed.
class CallGate {
public:
    /// A call that passes; false when the gate is closed.
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

    /// Afterwards no call passes and none runs, but that on the main loop itself it doesn't wait for a running one.
    void Close();
    /// Waits as Close does, and leaves the gate as it is.
    void WaitIdle();

private:
    void WaitIdle(std::unique_lock<std::mutex>& lock);

    /// Guards the rest, for a few instructions; nothing else is locked under it.
    std::mutex mutex;
    std::condition_variable ended; ///< a call ended
    bool closed = false;
    int running = 0;
};

} // namespace Vor
