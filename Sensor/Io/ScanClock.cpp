#include "Sensor/Io/ScanClock.h"

#include <chrono>

namespace Sensor::Io {

void ScanClock::Start() {
    const std::lock_guard guard(mutex);
    start = Vor::LoopCore::Instance().Now();
    last = {.now = {}, .scanning = true};
}

void ScanClock::Stop() {
    const std::lock_guard guard(mutex);
    if (last.scanning) {
        last.time = TimeAt(Vor::LoopCore::Instance().Now());
        last.scanning = false;
    }
}

void ScanClock::SetFrame(std::uint64_t frame, std::int64_t encoder) {
    const std::lock_guard guard(mutex);
    last.frame = frame;
    last.encoder = encoder;
}

ScanClock::Moment ScanClock::Now() const {
    const std::lock_guard guard(mutex);
    Moment moment = last;
    moment.now = Vor::LoopCore::Instance().Now();
    if (moment.scanning) {
        moment.time = TimeAt(moment.now);
    }
    return moment;
}

std::uint64_t ScanClock::TimeAt(Vor::LoopCore::Time now) const {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now - start).count());
}

} // namespace Sensor::Io
