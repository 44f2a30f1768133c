#include "Vor/LoopCore.h"

#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

namespace Vor {

namespace asio = boost::asio;

struct LoopCore::Engine {
    asio::io_context context;
    asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
    /// Expires when the first timer is due; used with the core's mutex held.
    asio::steady_timer wakeUp{context};
    std::optional<Time> wakeUpAt; ///< when `wakeUp` expires; empty while it isn't armed
    std::atomic<std::thread::id> thread;
    std::atomic<bool> stopRequested{false};
    /// Calls that were queued and have not begun; for a moment a call may begin before it is counted.
    std::atomic<std::int64_t> queued{0};
    /// Calls and timers that have run.
    std::atomic<std::size_t> ran{0};
};

LoopCore::LoopCore()
    : engine(std::make_unique<Engine>()) {}

LoopCore& LoopCore::Instance() {
    static LoopCore* const Instance = new LoopCore;
    return *Instance;
}

void LoopCore::Post(std::function<void()> call) {
    asio::post(engine->context, [this, call = std::move(call)] {
        --engine->queued;
        ++engine->ran;
        CallAndLogFailure(call);
    });
    Signal([this] { ++engine->queued; });
}

void LoopCore::CallAndLogFailure(const std::function<void()>& call) {
    RunLogged("Exception in a call of the main loop", call);
}

LoopCore::Time LoopCore::Now() const {
    const std::lock_guard lock(mutex);
    return manual ? manualNow : std::chrono::steady_clock::now();
}

std::chrono::microseconds LoopCore::Duration(unsigned long long microseconds) {
    constexpr unsigned long long TenYears = 10ULL * 366 * 24 * 3600 * 1000000;
    return std::chrono::microseconds(std::min(microseconds, TenYears));
}

LoopCore::TimerKey LoopCore::AddTimer(Time due, std::function<void()> call) {
    const std::lock_guard lock(mutex);
    const TimerKey key(due, ++lastTimer);
    timers.emplace(key, std::move(call));
    ArmWakeUp();
    return key;
}

void LoopCore::RemoveTimer(const TimerKey& key) {
    const std::lock_guard lock(mutex);
    if (timers.erase(key) > 0) {
        ArmWakeUp();
    }
}

// Called with the mutex held.
void LoopCore::ArmWakeUp() {
    std::optional<Time> due;
    if (!manual && !timers.empty()) {
        due = timers.begin()->first.first;
    }
    if (due == engine->wakeUpAt) {
        return;
    }
    engine->wakeUpAt = due;
    if (!due) {
        engine->wakeUp.cancel();
        return;
    }
    engine->wakeUp.expires_at(*due);
    engine->wakeUp.async_wait([this](const boost::system::error_code& error) {
        if (!error) {
            {
                const std::lock_guard lock(mutex);
                engine->wakeUpAt.reset();
            }
            RunDueTimers();
        }
    });
}

void LoopCore::RunDueTimers() {
    const Time now = Now();
    for (;;) {
        std::function<void()> call;
        {
            const std::lock_guard lock(mutex);
            const auto first = timers.begin();
            if (first == timers.end() || first->first.first > now) {
                ArmWakeUp();
                return;
            }
            call = std::move(first->second);
            timers.erase(first);
        }
        ++engine->ran;
        CallAndLogFailure(call);
    }
}

bool LoopCore::WaitUntil(Time deadline, const std::function<bool()>& done) {
    std::unique_lock lock(waitMutex);
    while (!done()) {
        bool isManual = false;
        {
            const std::lock_guard clockLock(mutex);
            isManual = manual;
        }
        if (Now() >= deadline) {
            return false;
        }
        if (isManual) {
            waitChanged.wait(lock);
        } else {
            waitChanged.wait_until(lock, deadline);
        }
    }
    return true;
}

void LoopCore::Signal(const std::function<void()>& change) {
    const std::lock_guard lock(waitMutex);
    change();
    waitChanged.notify_all();
}

bool LoopCore::OnThread() const {
    return engine->thread.load() == std::this_thread::get_id();
}

std::size_t LoopCore::QueuedCount() const {
    return static_cast<std::size_t>(std::max(engine->queued.load(), std::int64_t{0}));
}

void LoopCore::BecomeLoopThread() {
    engine->thread.store(std::this_thread::get_id());
}

void LoopCore::Claim(bool manualClock) {
    Signal([&] {
        const std::lock_guard lock(mutex);
        if (claimed) {
            Throw(yERROR_ALREADY_EXISTS, "The process has a main loop already");
        }
        claimed = true;
        manual = manualClock;
        manualNow = std::chrono::steady_clock::now();
        ArmWakeUp();
    });
    engine->stopRequested = false;
    BecomeLoopThread();
}

void LoopCore::Unclaim() {
    engine->thread.store(std::thread::id());
    Signal([this] {
        const std::lock_guard lock(mutex);
        claimed = false;
        manual = false;
        ArmWakeUp();
    });
}

void LoopCore::Run() {
    BecomeLoopThread();
    do {
        engine->context.restart();
        if (!engine->stopRequested) {
            engine->context.run();
        }
    } while (!engine->stopRequested);
    engine->stopRequested = false;
}

void LoopCore::Stop() {
    engine->stopRequested = true;
    engine->context.stop();
}

bool LoopCore::Step() {
    BecomeLoopThread();
    engine->context.restart();
    const std::size_t before = engine->ran;
    while (engine->ran == before && engine->context.poll_one() > 0) {
    }
    return engine->ran != before;
}

std::size_t LoopCore::RunReady() {
    BecomeLoopThread();
    engine->context.restart();
    const std::size_t start = engine->ran;
    std::size_t before = 0;
    do {
        before = engine->ran;
        engine->context.poll();
        RunDueTimers();
    } while (engine->ran != before);
    return engine->ran - start;
}

std::size_t LoopCore::Advance(std::chrono::microseconds time) {
    const Time target = Now() + time;
    std::size_t count = RunReady();
    for (bool arrived = false; !arrived;) {
        Signal([&] {
            const std::lock_guard lock(mutex);
            arrived = timers.empty() || timers.begin()->first.first > target;
            manualNow = arrived ? target : std::max(manualNow, timers.begin()->first.first);
        });
        count += RunReady();
    }
    return count;
}

void LoopCore::Elapse(std::chrono::microseconds time) {
    Signal([&] {
        const std::lock_guard lock(mutex);
        manualNow += time;
    });
}

bool LoopCore::WaitReady(std::chrono::milliseconds deadline) {
    std::unique_lock lock(waitMutex);
    return waitChanged.wait_for(lock, deadline, [this] { return engine->queued > 0; });
}

} // namespace Vor
