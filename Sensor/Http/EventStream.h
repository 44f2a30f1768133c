#pragma once

#include "Sensor/Http/HttpResponse.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace Sensor::Http {

/// The server-sent events that wait for one client. Filled on the main loop, read on the network thread. It is cut, and
/// what waits is dropped, when more waits than a client may leave unread.
class EventStream : public IBodyStream {
public:
    struct Limits {
        std::size_t events = 1024;
        std::size_t bytes = std::size_t{1024} * 1024;
    };

    /// One event in the form in which it is sent, shared by all of its clients.
    using Text = std::shared_ptr<const std::string>;

    explicit EventStream(const Limits& limits);

    /// Appends an event. An event with a key replaces the one of the same key that waits, in its place.
    void Push(Text text, const std::string& key = std::string());
    /// Ends the stream after what waits.
    void End();

    void Read(std::string& out) override;
    bool Ended() const override;
    bool IsCut() const override;

private:
    struct Event {
        std::string key;
        Text text;
    };

    const Limits limits;

    /// Guards the members below. No other lock is taken while it is held.
    mutable std::mutex mutex;
    std::deque<Event> waiting;
    std::size_t waitingBytes = 0;
    bool ended = false;
    bool isCut = false;
};

} // namespace Sensor::Http
