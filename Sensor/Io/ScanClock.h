#pragma once

#include "Vor/LoopCore.h"

#include <cstdint>
#include <mutex>
#include <optional>

namespace Sensor::Io {

/// The time and the encoder of the scan, as its stamps have them. They stand still while no scan runs. For any thread.
class ScanClock {
public:
    struct Moment {
        Vor::LoopCore::Time now;
        bool scanning = false;
        std::uint64_t time = 0;                            ///< microseconds since the start of the present or last scan
        std::int64_t encoder = 0;                          ///< at the last frame; 0 before the first
        std::optional<std::uint64_t> frame = std::nullopt; ///< the last one of this scan
    };

    /// Begins anew: no frame, encoder and time 0.
    void Start();
    void Stop();
    void SetFrame(std::uint64_t frame, std::int64_t encoder);

    Moment Now() const;

private:
    std::uint64_t TimeAt(Vor::LoopCore::Time now) const;

    mutable std::mutex mutex; ///< guards `last` and `start`; but for the loop's clock no lock is taken under it
    Moment last;              ///< `now` and, while a scan runs, `time` aren't kept in it
    Vor::LoopCore::Time start;
};

} // namespace Sensor::Io
