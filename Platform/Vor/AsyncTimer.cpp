#include "Vor/AsyncTimer.h"

#include "Vor/CallGate.h"
#include "Vor/Exception.h"
#include "Vor/LoopCore.h"

#include <mutex>
#include <optional>
#include <utility>

namespace Vor {

struct AsyncTimer::State : std::enable_shared_from_this<AsyncTimer::State> {
    State(AsyncTimer& owner, std::function<void(AsyncTimer&)> callback)
        : owner(owner)
        , callback(std::move(callback)) {}

    AsyncTimer& owner;
    const std::function<void(AsyncTimer&)> callback;
    CallGate gate;
    /// Guards the members below; ranks before the loop's mutex.
    std::mutex mutex;
    std::optional<LoopCore::TimerKey> key; ///< empty while no timer is armed
    std::uint64_t start = 0;               ///< grows with each start and stop
    std::chrono::microseconds period{};
    bool oneShot = false;

    /// Called with the mutex held.
    void Disarm() {
        ++start;
        if (key) {
            LoopCore::Instance().RemoveTimer(*key);
            key.reset();
        }
    }

    /// Called with the mutex held.
    void Arm(LoopCore::Time due) {
        key =
            LoopCore::Instance().AddTimer(due, [self = shared_from_this(), due, now = start] { self->Fire(due, now); });
    }

    void Fire(LoopCore::Time due, std::uint64_t ofStart) {
        const CallGate::Passage passage(gate);
        {
            const std::lock_guard lock(mutex);
            if (ofStart != start) {
                return;
            }
            key.reset();
            if (!oneShot) {
                Arm(due + period);
            }
        }
        callback(owner);
    }
};

AsyncTimer::AsyncTimer(std::function<void(AsyncTimer&)> callback)
    : state(std::make_shared<State>(*this, std::move(callback))) {}

AsyncTimer::~AsyncTimer() {
    Stop();
}

void AsyncTimer::Start(unsigned long long period, bool oneShot) {
    if (period == 0 && !oneShot) {
        Throw(yERROR_PARAMETER, "A repeating timer needs a period");
    }
    const std::lock_guard lock(state->mutex);
    state->Disarm();
    state->period = LoopCore::Duration(period);
    state->oneShot = oneShot;
    state->Arm(LoopCore::Instance().Now() + state->period);
}

void AsyncTimer::Stop() {
    {
        const std::lock_guard lock(state->mutex);
        state->Disarm();
    }
    state->gate.WaitIdle();
}

} // namespace Vor
