#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

namespace Services::Ascii {

/// The lines that wait for one client. The queue is bounded: a line for which there is no room is dropped and counted.
/// For any thread; no operation allocates.
class PushQueue {
public:
    explicit PushQueue(std::size_t capacity);

    /// Returns whether there was room.
    bool Add(std::string_view line);
    /// Moves the oldest lines to `place`, as many whole ones as fit. Returns their size.
    std::size_t MoveTo(std::span<unsigned char> place);
    std::uint64_t Dropped() const;

private:
    /// Guards the members below, only while a line is copied. No lock is acquired under it.
    mutable std::mutex mutex;
    std::vector<unsigned char> bytes; ///< for each line its size, then its characters
    std::size_t begin = 0;
    std::size_t end = 0;
    std::uint64_t dropped = 0;
};

} // namespace Services::Ascii
