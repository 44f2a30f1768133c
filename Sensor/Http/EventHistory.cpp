#include "Sensor/Http/EventHistory.h"

#include "Sensor/Http/EventText.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>
#include <utility>

namespace Sensor::Http {

namespace {

bool IsBelow(std::string_view path, std::string_view top) {
    return path.size() > top.size() && path.starts_with(top) && path[top.size()] == '/';
}

} // namespace

bool NumberedEvent::IsFor(const std::vector<EventTopic>& topics) const {
    return std::ranges::any_of(topics, [this](const EventTopic& topic) {
        return topic.kind == kind && (kind != EventTopic::Kind::Notice || topic.path == path ||
                                      IsBelow(path, topic.path) || (isReload && IsBelow(topic.path, path)));
    });
}

EventHistory::EventHistory(std::string boot, std::size_t capacity)
    : boot(std::move(boot))
    , capacity(capacity) {}

const NumberedEvent& EventHistory::Add(NumberedEvent event, const std::string& name, const std::string& data) {
    event.number = ++last;
    event.text = std::make_shared<const std::string>(EventText(name, boot + ':' + std::to_string(event.number), data));
    if (events.size() == capacity) {
        events.pop_front();
    }
    events.push_back(std::move(event));
    return events.back();
}

std::optional<std::vector<EventStream::Text>> EventHistory::Since(const std::string& id,
                                                                  const std::vector<EventTopic>& topics,
                                                                  const EventStream::Limits& limits) const {
    const auto number = NumberOf(id);
    const std::uint64_t lost = last - events.size(); // the number of the latest event that isn't kept
    if (!number || *number < lost || *number > last) {
        return std::nullopt;
    }
    std::vector<EventStream::Text> texts;
    std::size_t bytes = 0;
    for (auto event = events.begin() + static_cast<std::ptrdiff_t>(*number - lost); event != events.end(); ++event) {
        if (!event->IsFor(topics)) {
            continue;
        }
        bytes += event->text->size();
        texts.push_back(event->text);
        if (texts.size() > limits.events || bytes > limits.bytes) {
            return std::nullopt;
        }
    }
    return texts;
}

std::optional<std::uint64_t> EventHistory::NumberOf(const std::string& id) const {
    std::string_view text = id;
    if (!text.starts_with(boot) || text.size() <= boot.size() + 1 || text[boot.size()] != ':') {
        return std::nullopt;
    }
    text.remove_prefix(boot.size() + 1);
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

} // namespace Sensor::Http
