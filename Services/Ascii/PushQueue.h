#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

namespace Services::Ascii {

/// The lines that wait for one client. It is bounded: a line that has no room is dropped and counted. Any thread; no
/// operation allocates.
class PushQueue {
public:
    explicit PushQueue(std::size_t capacity);

    /// Whether there was room.
    bool Add(std::string_view line);
    /// Takes the oldest lines, whole ones only, as many as have room. Returns their size.
    std::size_t MoveTo(std::span<unsigned char> place);
    std::uint64_t Dropped() const;

private:
    /// Guards the members below. A leaf: it is held for a copy only.
    mutable std::mutex mutex;
    std::vector<unsigned char> bytes; ///< of each line its size, then its characters
    std::size_t begin = 0;
    std::size_t end = 0;
    std::uint64_t dropped = 0;
};

} // namespace Services::Ascii
