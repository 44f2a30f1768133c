#include "Vor/AsyncRunner.h"

#include "Vor/AsyncLoop.h"
#include "Vor/CallGate.h"
#include "Vor/Exception.h"
#include "Vor/LoopCore.h"
#include "yApi/yFault.h"

#include <deque>
#include <exception>
#include <mutex>
#include <utility>

namespace Vor {

struct AsyncRunner::State {
    CallGate gate;
    /// Guards the queue; ranks before the loop's mutexes.
    std::mutex mutex;
    std::deque<std::function<void()>> queue;

    static void Enqueue(const std::shared_ptr<State>& state, std::function<void()> call) {
        const std::lock_guard lock(state->mutex);
        state->queue.push_back(std::move(call));
        try {
            LoopCore::Instance().Post([state] { state->RunFirst(); });
        } catch (...) {
            state->queue.pop_back();
            throw;
        }
    }

    void RunFirst() {
        const CallGate::Passage passage(gate);
        if (!passage) {
            return;
        }
        std::function<void()> call;
        {
            const std::lock_guard lock(mutex);
            call = std::move(queue.front());
            queue.pop_front();
        }
        call();
    }
};

namespace {

/// What a waiting caller and its closure share. Guarded by the loop's mutex for waits.
struct Waiter {
    bool done = false;
    bool abandoned = false; ///< the caller's time-out has passed
    std::exception_ptr failure;
};

void RunFor(Waiter& waiter, std::function<void()>& call) {
    std::exception_ptr failure;
    try {
        call();
    } catch (...) {
        failure = std::current_exception();
    }
    // The caller may rely on it that the closure's objects no longer exist.
    call = nullptr;
    bool late = false;
    LoopCore::Instance().Signal([&] {
        late = waiter.abandoned;
        if (!late) {
            waiter.done = true;
            waiter.failure = std::move(failure);
            failure = nullptr;
        }
    });
    if (late && failure) {
        std::rethrow_exception(std::move(failure));
    }
}

} // namespace

AsyncRunner::AsyncRunner()
    : state(std::make_shared<State>()) {}

AsyncRunner::~AsyncRunner() {
    state->gate.Close();
    std::deque<std::function<void()>> dropped;
    const std::lock_guard lock(state->mutex);
    dropped.swap(state->queue);
}

void AsyncRunner::Run(std::function<void()> call) {
    ThrowIfFailed(yFault_Check("AsyncRunner_Run"));
    State::Enqueue(state, std::move(call));
}

void AsyncRunner::RunAndWait(std::function<void()> call, unsigned long long timeout) {
    ThrowIfFailed(yFault_Check("AsyncRunner_RunAndWait"));
    if (AsyncLoop::OnMainLoop()) {
        call();
        return;
    }
    LoopCore& loop = LoopCore::Instance();
    const auto deadline = loop.Now() + LoopCore::Duration(timeout);
    const auto waiter = std::make_shared<Waiter>();
    State::Enqueue(state, [waiter, call = std::move(call)]() mutable { RunFor(*waiter, call); });
    loop.WaitUntil(deadline, [&] { return waiter->done; });

    bool done = false;
    std::exception_ptr failure;
    loop.Signal([&] {
        done = waiter->done;
        waiter->abandoned = !done;
        failure = std::move(waiter->failure);
        waiter->failure = nullptr;
    });
    if (!done) {
        Throw(yERROR_TIMEOUT, "The main loop did not answer within %llu microseconds", timeout);
    }
    if (failure) {
        std::rethrow_exception(std::move(failure));
    }
}

} // namespace Vor
