#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Tests {

/// An event that one thread sets and others wait for, with a deadline that no working program reaches.
class Signal {
public:
    void Set() {
        const std::lock_guard guard(mutex);
        set = true;
        changed.notify_all();
    }

    bool IsSet() const {
        const std::lock_guard guard(mutex);
        return set;
    }

    /// False when the deadline passed.
    bool Wait(std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, deadline, [this] { return set; });
    }

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    bool set = false;
};

} // namespace Tests
