#include "Sensor/Http/EventStream.h"

#include <algorithm>
#include <utility>

namespace Sensor::Http {

namespace {

/// What is sent in one piece, about. The rest can still be replaced by something newer meanwhile.
constexpr std::size_t PieceSize = 65536;

} // namespace

EventStream::EventStream(const Limits& limits)
    : limits(limits) {}

void EventStream::Push(Text text, const std::string& key) {
    const std::lock_guard guard(mutex);
    if (ended) {
        return;
    }
    const auto same = key.empty() ? waiting.end() : std::ranges::find(waiting, key, &Event::key);
    waitingBytes += text->size();
    if (same != waiting.end()) {
        waitingBytes -= same->text->size();
        same->text = std::move(text);
    } else {
        waiting.push_back({key, std::move(text)});
    }
    if (waiting.size() > limits.events || waitingBytes > limits.bytes) {
        waiting.clear();
        waitingBytes = 0;
        ended = true;
        isCut = true;
    }
}

void EventStream::End() {
    const std::lock_guard guard(mutex);
    ended = true;
}

void EventStream::Read(std::string& out) {
    const std::lock_guard guard(mutex);
    for (std::size_t size = 0; !waiting.empty() && size < PieceSize; waiting.pop_front()) {
        const std::string& text = *waiting.front().text;
        out += text;
        size += text.size();
        waitingBytes -= text.size();
    }
}

bool EventStream::Ended() const {
    const std::lock_guard guard(mutex);
    return ended && waiting.empty();
}

bool EventStream::IsCut() const {
    const std::lock_guard guard(mutex);
    return isCut;
}

} // namespace Sensor::Http
