#include "Vor/CallGate.h"

#include "Vor/AsyncLoop.h"

namespace Vor {

CallGate::Passage::Passage(CallGate& gate)
    : gate(gate)
    , passed([&gate] {
        const std::lock_guard lock(gate.mutex);
        gate.running += gate.closed ? 0 : 1;
        return !gate.closed;
    }()) {}

CallGate::Passage::~Passage() {
    if (passed) {
        const std::lock_guard lock(gate.mutex);
        --gate.running;
        gate.ended.notify_all();
    }
}

void CallGate::Close() {
    std::unique_lock lock(mutex);
    closed = true;
    WaitIdle(lock);
}

void CallGate::WaitIdle() {
    std::unique_lock lock(mutex);
    WaitIdle(lock);
}

void CallGate::WaitIdle(std::unique_lock<std::mutex>& lock) {
    if (!AsyncLoop::OnMainLoop()) {
        ended.wait(lock, [this] { return running == 0; });
    }
}

} // namespace Vor
