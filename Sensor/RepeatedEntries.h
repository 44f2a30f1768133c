#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Sensor {

/// Counts entries of the log that are equal to one of the last Window, in level and text. Not thread-safe.
class RepeatedEntries {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds Window{10};
    /// One more entry isn't remembered.
    static constexpr std::size_t MaxEntries = 1000;

    struct Repeated {
        std::uint64_t level;
        std::string text;
        std::size_t count; ///< after the entry that was written
    };

    /// Whether the entry is to be written; otherwise it is counted.
    bool Add(std::uint64_t level, const std::string& text, Clock::time_point now);

    /// The entries that were counted in a Window that has ended. Another Window begins for each of them.
    std::vector<Repeated> Ended(Clock::time_point now);

private:
    struct Count {
        Clock::time_point begin;
        std::size_t count = 0;
    };

    std::map<std::pair<std::uint64_t, std::string>, Count> entries;
};

} // namespace Sensor
