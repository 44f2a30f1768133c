#include "Sensor/Resources/LoopStalls.h"

#include <algorithm>
#include <cstddef>

namespace Sensor::Resources {

using std::chrono::microseconds;

LoopStalls::LoopStalls()
    : timer([this](Vor::AsyncTimer&) { Look(); }) {
    Wait();
}

microseconds LoopStalls::Longest() const {
    const Time now = Vor::LoopCore::Instance().Now();
    microseconds longest = LateBy(now);
    for (const Slot& slot : slots) {
        if (slot.number + static_cast<std::int64_t>(slots.size()) > NumberOf(now)) {
            longest = std::max(longest, slot.longest);
        }
    }
    return longest;
}

std::int64_t LoopStalls::NumberOf(Time time) {
    return time.time_since_epoch() / SlotTime;
}

microseconds LoopStalls::LateBy(Time now) const {
    return std::max(microseconds(0), std::chrono::duration_cast<microseconds>(now - due));
}

void LoopStalls::Look() {
    const Time now = Vor::LoopCore::Instance().Now();
    const std::int64_t number = NumberOf(now);
    Slot& slot = slots[static_cast<std::size_t>(number) % slots.size()];
    if (slot.number != number) {
        slot = {.number = number};
    }
    slot.longest = std::max(slot.longest, LateBy(now));
    Wait();
}

// Not a repeating timer, which would make up for what a stall has left out.
void LoopStalls::Wait() {
    due = Vor::LoopCore::Instance().Now() + Period;
    timer.Start(static_cast<unsigned long long>(microseconds(Period).count()), true);
}

} // namespace Sensor::Resources
