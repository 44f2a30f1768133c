#include "VorCore/ResultHub.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/Object.h"
#include "yApi/yFault.h"
#include "yApi/yThread.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace VorCore {

class ResultHub::Worker {
public:
    Worker()
        : thread([this] { Run(); }) {
        pthread_setname_np(thread.native_handle(), "ResultHub");
    }

    ~Worker() {
        {
            const std::lock_guard guard(mutex);
            stopping = true;
            queue.clear();
        }
        changed.notify_all();
        thread.join();
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

    void WaitForRunningDelivery() {
        if (std::this_thread::get_id() == thread.get_id()) {
            return;
        }
        std::unique_lock guard(mutex);
        changed.wait(guard, [this, begun = delivered] { return !delivering || delivered != begun; });
    }

    Vor::Event<void*> event;

private:
    /// Guards the rest but the thread; no handler runs while it is held. Innermost.
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Vor::Object> queue;
    std::uint64_t published = 0;
    std::uint64_t delivered = 0;
    bool delivering = false;
    bool stopping = false;
    std::thread thread; ///< last, since it uses all of the above

    void Run() {
        std::unique_lock guard(mutex);
        while (true) {
            changed.wait(guard, [this] { return stopping || !queue.empty(); });
            if (stopping) {
                return;
            }
            auto set = std::move(queue.front());
            queue.pop_front();
            delivering = true;
            guard.unlock();
            event.Raise(set.Get());
            set = Vor::Object();
            guard.lock();
            delivering = false;
            ++delivered;
            changed.notify_all();
        }
    }
};

namespace {

void CallGuarded(const std::function<void(void*)>& handler, void* resultSet) {
    try {
        handler(resultSet);
    } catch (const std::exception& exception) {
        Vor::LogError("Exception thrown by a result handler");
        Vor::Exception::LogException(exception);
        Vor::Exception::LogBackTrace(exception);
    } catch (...) {
        Vor::LogError("Unknown exception thrown by a result handler");
    }
}

} // namespace

ResultHub::ResultHub()
    : worker(std::make_unique<Worker>()) {}

ResultHub::~ResultHub() = default;

ResultHub::CallbackId ResultHub::AddResultHandler(std::function<void(void*)> handler) {
    Vor::ThrowIfFailed(yFault_Check("ResultHub_AddResultHandler"));
    if (!handler) {
        return {};
    }
    return worker->event.Add([handler = std::move(handler)](void* set) { CallGuarded(handler, set); });
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

} // namespace VorCore
