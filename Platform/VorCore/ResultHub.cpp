#include "VorCore/ResultHub.h"

#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorApi/Object.h"
#include "VorApi/Threads/NamedThread.h"
#include "yApi/yDuration.h"
#include "yApi/yFault.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace VorCore {

class ResultHub::Worker {
public:
    Worker()
        : thread("ResultHub", [this] { return Run(); }) {}

    ~Worker() {
        {
            const std::lock_guard guard(mutex);
            stopping = true;
            queue.clear();
        }
        changed.notify_all();
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Publish(void* resultSet) {
        auto set = Vor::Object::Share(resultSet);
        {
            const std::lock_guard guard(mutex);
            queue.push_back(std::move(set));
            ++published;
        }
        changed.notify_all();
    }

    bool Drain(std::uint64_t timeoutMicroseconds) {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, yThread_Duration(timeoutMicroseconds),
                                [this, target = published] { return delivered >= target; });
    }

    std::size_t QueuedCount() const {
        const std::lock_guard guard(mutex);
        return queue.size();
    }

    /// Doesn't wait on the thread of the delivery itself.
    void WaitForRunningDelivery() {
        std::unique_lock guard(mutex);
        if (deliveringThread == std::this_thread::get_id()) {
            return;
        }
        const auto isNone = [this] { return deliveringThread == std::thread::id(); };
        changed.wait(guard, [&, begun = delivered] { return isNone() || delivered != begun; });
    }

    Vor::Event<void*> event;

private:
    /// Guards the members below except the thread. No handler runs while it is held, and no other lock is taken.
    mutable std::mutex mutex;
    std::condition_variable changed; ///< a set was queued or delivered, or the worker is to stop
    std::deque<Vor::Object> queue;
    std::uint64_t published = 0;
    std::uint64_t delivered = 0;
    std::thread::id deliveringThread; ///< set while handlers run
    bool stopping = false;
    Vor::NamedThread thread; ///< last, so that it has ended before the other members are destroyed

    yStatus Run() {
        std::unique_lock guard(mutex);
        while (true) {
            changed.wait(guard, [this] { return stopping || !queue.empty(); });
            if (stopping) {
                return yOK;
            }
            auto set = std::move(queue.front());
            queue.pop_front();
            deliveringThread = std::this_thread::get_id();
            guard.unlock();
            event.Raise(set.Get());
            set = Vor::Object();
            guard.lock();
            deliveringThread = std::thread::id();
            ++delivered;
            changed.notify_all();
        }
    }
};

ResultHub::ResultHub()
    : worker(std::make_unique<Worker>()) {}

ResultHub::~ResultHub() = default;

ResultHub::CallbackId ResultHub::AddResultHandler(std::function<void(void*)> handler) {
    Vor::ThrowIfFailed(yFault_Check("ResultHub_AddResultHandler"));
    if (!handler) {
        return {};
    }
    return worker->event.Add([handler = std::move(handler)](void* set) {
        Vor::RunLogged("Exception thrown by a result handler", [&] { handler(set); });
    });
}

void ResultHub::RemoveResultHandler(CallbackId& id) {
    const yStatus fault = yFault_Check("ResultHub_RemoveResultHandler");
    if (id.IsSet()) {
        worker->event.Remove(id);
        worker->WaitForRunningDelivery();
    }
    Vor::ThrowIfFailed(fault);
}

std::size_t ResultHub::ResultHandlerCount() const {
    return worker->event.Count();
}

void ResultHub::Publish(void* resultSet) {
    worker->Publish(resultSet);
}

bool ResultHub::Drain(std::uint64_t timeoutMicroseconds) {
    return worker->Drain(timeoutMicroseconds);
}

std::size_t ResultHub::QueuedCount() const {
    return worker->QueuedCount();
}

} // namespace VorCore
