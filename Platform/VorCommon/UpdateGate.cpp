#include "VorCommon/UpdateGate.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"

namespace VorCommon {

UpdateGate::UpdateGate(std::chrono::milliseconds patience)
    : patience(patience) {}

void UpdateGate::Enter(int) {
    const auto self = std::this_thread::get_id();
    std::unique_lock lock(mutex);
    const auto mayEnter = [this, self] { return depth == 0 || owner == self; };
    if (!freed.wait_for(lock, patience, mayEnter)) {
        lock.unlock();
        Vor::LogError("The update gate has been held by another thread for more than %lld ms", patience.count());
        lock.lock();
        freed.wait(lock, mayEnter);
    }
    owner = self;
    ++depth;
}

void UpdateGate::Leave(int) {
    const std::lock_guard lock(mutex);
    if (depth == 0 || owner != std::this_thread::get_id()) {
        Vor::Throw(yERROR_STATE, "The calling thread has not entered the update gate");
    }
    if (--depth == 0) {
        freed.notify_one();
    }
}

int UpdateGate::Depth() const {
    const std::lock_guard lock(mutex);
    return depth;
}

bool UpdateGate::HeldByThisThread() const {
    const std::lock_guard lock(mutex);
    return depth > 0 && owner == std::this_thread::get_id();
}

} // namespace VorCommon
