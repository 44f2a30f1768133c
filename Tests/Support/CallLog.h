#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// Records the calls of a fake, on any thread.
class CallLog {
public:
    /// Sets a function that is called with each recorded call, without a lock. It may throw.
    void OnCall(std::function<void(const std::string&)> hook) {
        const std::lock_guard guard(mutex);
        onCall = std::move(hook);
    }

    /// Returns the calls since the last call of this.
    std::vector<std::string> NewCalls() {
        const std::lock_guard guard(mutex);
        return std::exchange(calls, {});
    }

protected:
    void Note(const std::string& call) {
        std::function<void(const std::string&)> hook;
        {
            const std::lock_guard guard(mutex);
            calls.push_back(call);
            hook = onCall;
        }
        if (hook) {
            hook(call);
        }
    }

    static const char* Text(bool value) { return value ? "true" : "false"; }

private:
    std::mutex mutex; ///< guards the calls and the hook
    std::vector<std::string> calls;
    std::function<void(const std::string&)> onCall;
};

} // namespace Tests
