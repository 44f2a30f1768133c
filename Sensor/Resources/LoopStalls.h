#pragma once

#include "Vor/AsyncTimer.h"
#include "Vor/LoopCore.h"

#include <array>
#include <chrono>
#include <cstdint>

namespace Sensor::Resources {

/// For how long the main loop was busy while something else was due. Main loop only.
class LoopStalls {
public:
    /// How often it looks, so a stall may be seen as shorter by that.
    static constexpr std::chrono::milliseconds Period{20};
    /// For how long a stall is remembered, less a tenth at most.
    static constexpr std::chrono::seconds Memory{60};

    LoopStalls();

    /// Of the last Memory, with one that is just over.
    std::chrono::microseconds Longest() const;

private:
    using Time = Vor::LoopCore::Time;

    static constexpr std::chrono::seconds SlotTime = Memory / 10;

    struct Slot {
        std::int64_t number = 0; ///< of its time since the start of the clock
        std::chrono::microseconds longest{0};
    };

    static std::int64_t NumberOf(Time time);
    std::chrono::microseconds LateBy(Time now) const;
    void Look();
    void Wait();

    std::array<Slot, Memory / SlotTime> slots{}; ///< each time has the one of its remainder
    Time due;
    Vor::AsyncTimer timer;
};

} // namespace Sensor::Resources
