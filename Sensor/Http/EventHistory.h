#pragma once

#include "Sensor/Http/EventStream.h"
#include "Sensor/Http/EventTopic.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace Sensor::Http {

/// An event of a topic with ids.
struct NumberedEvent {
    std::uint64_t number = 0;
    EventTopic::Kind kind = EventTopic::Kind::State;
    std::string path;       ///< of a notice
    bool isReload = false;  ///< the notice is about all below its path
    EventStream::Text text; ///< null: not made yet

    /// Whether a client with these topics gets it.
    bool IsFor(const std::vector<EventTopic>& topics) const;
};

/// The latest events with ids, for clients that come back. Main loop only.
class EventHistory {
public:
    /// `boot` is part of each id, so that ids of another run of the program are recognised.
    EventHistory(std::string boot, std::size_t capacity);

    /// Numbers the event and makes its text of its name and data. The oldest one goes when there is no room.
    const NumberedEvent& Add(NumberedEvent event, const std::string& name, const std::string& data);

    /// What has happened for these topics after the event with that id; nothing when it isn't known any more, was
    /// never given, or when it is more than `limits` allows to wait.
    std::optional<std::vector<EventStream::Text>> Since(const std::string& id, const std::vector<EventTopic>& topics,
                                                        const EventStream::Limits& limits) const;

private:
    std::optional<std::uint64_t> NumberOf(const std::string& id) const;

    const std::string boot;
    const std::size_t capacity;
    std::deque<NumberedEvent> events;
    std::uint64_t last = 0;
};

} // namespace Sensor::Http
