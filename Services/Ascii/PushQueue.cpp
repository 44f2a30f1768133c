#include "Services/Ascii/PushQueue.h"

#include <cstring>

namespace Services::Ascii {

namespace {

using LineSize = std::uint32_t;

} // namespace

PushQueue::PushQueue(std::size_t capacity)
    : bytes(capacity) {}

bool PushQueue::Add(std::string_view line) {
    const std::lock_guard lock(mutex);
    if (sizeof(LineSize) + line.size() > bytes.size() - (end - begin)) {
        ++dropped;
        return false;
    }
    if (sizeof(LineSize) + line.size() > bytes.size() - end) {
        std::memmove(bytes.data(), &bytes[begin], end - begin);
        end -= begin;
        begin = 0;
    }
    const auto size = static_cast<LineSize>(line.size());
    std::memcpy(&bytes[end], &size, sizeof size);
    std::memcpy(&bytes[end] + sizeof size, line.data(), line.size());
    end += sizeof size + line.size();
    return true;
}

std::size_t PushQueue::MoveTo(std::span<unsigned char> place) {
    const std::lock_guard lock(mutex);
    std::size_t moved = 0;
    while (begin < end) {
        LineSize size = 0;
        std::memcpy(&size, &bytes[begin], sizeof size);
        if (size > place.size() - moved) {
            break;
        }
        std::memcpy(place.data() + moved, &bytes[begin] + sizeof size, size);
        moved += size;
        begin += sizeof size + size;
    }
    if (begin == end) {
        begin = end = 0;
    }
    return moved;
}

std::uint64_t PushQueue::Dropped() const {
    const std::lock_guard lock(mutex);
    return dropped;
}

} // namespace Services::Ascii
