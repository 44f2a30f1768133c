#pragma once

#include "Tests/Support/ResultSets.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

namespace Tests {

/// A result handler that collects the sets.
class SetCollector {
public:
    std::function<void(void*)> Handler() {
        return [this](void* batch) { Append(batch); };
    }

    void Append(void* batch) {
        auto sets = SetsOf(batch);
        const std::lock_guard guard(mutex);
        batchSizes.push_back(sets.size());
        for (auto& set : sets) {
            received.push_back(std::move(set));
        }
        changed.notify_all();
    }

    /// Waits until `count` sets were received; false at the deadline.
    bool WaitFor(std::size_t count) {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, std::chrono::seconds(20), [&] { return received.size() >= count; });
    }

    std::vector<Vor::Object> Sets() const {
        const std::lock_guard guard(mutex);
        return received;
    }

    std::vector<std::size_t> BatchSizes() const {
        const std::lock_guard guard(mutex);
        return batchSizes;
    }

    void Clear() {
        const std::lock_guard guard(mutex);
        received.clear();
        batchSizes.clear();
    }

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<Vor::Object> received;
    std::vector<std::size_t> batchSizes;
};

} // namespace Tests
