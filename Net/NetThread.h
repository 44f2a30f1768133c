#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>

namespace Net {

/// A thread for sockets: it waits for them and for work, and none of what it runs may wait for anything else. Servers
/// on it must be destroyed first.
class NetThread {
public:
    /// At most 15 characters. Throws a Vor::Exception when the system has no more threads or descriptors.
    explicit NetThread(const char* name);
    /// Work that hasn't begun is dropped.
    ~NetThread();
    NetThread(const NetThread&) = delete;
    NetThread& operator=(const NetThread&) = delete;

    const std::string& Name() const;
    /// Whether the caller is on this thread.
    bool IsCurrent() const;
    /// For the beginning of what must run on this thread. Throws yERROR_STATE elsewhere.
    void AssertCurrent() const;

    /// Runs `work` on the thread, after what was posted before. For any thread. What it throws is logged.
    void Post(std::function<void()> work);

    /// Runs `work` on the thread, waits for it, and returns or throws what it does. On the thread itself it runs at
    /// once. The caller must hold no lock that the thread enters.
    template <typename Work>
    auto Call(Work work) -> decltype(work()) {
        if (IsCurrent()) {
            return work();
        }
        std::packaged_task<decltype(work())()> task(std::move(work));
        auto result = task.get_future();
        Post([&task] { task(); });
        return result.get();
    }

    /// Runs `work` on the thread at once and then after each period, until the thread ends. A late run doesn't delay
    /// the ones after it. What it throws is logged.
    void Repeat(std::chrono::milliseconds period, std::function<void()> work);

    class Loop;
    /// For the sources in Net/.
    Loop& OwnLoop() { return *loop; }

private:
    const std::unique_ptr<Loop> loop;
};

} // namespace Net
