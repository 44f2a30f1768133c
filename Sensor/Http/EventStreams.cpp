#include "Sensor/Http/EventStreams.h"

#include "Sensor/Http/EventText.h"
#include "Sensor/RandomText.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"
#include "VorApi/ResourceRouter.h"

#include <algorithm>
#include <chrono>
#include <set>

#include <nlohmann/json.hpp>

namespace Sensor::Http {

namespace {

constexpr const char* EventsPath = "/events";
constexpr unsigned long long BeatPeriod = 1'000'000;
constexpr std::size_t NameBytes = 16;

/// For texts of clients.
constexpr auto ReplaceWrongBytes = nlohmann::json::error_handler_t::replace;

const char* TextOf(VorApi::Notification code) {
    switch (code) {
    case VorApi::Notification::Created:
        return "created";
    case VorApi::Notification::Changed:
        return "changed";
    case VorApi::Notification::Deleted:
        return "deleted";
    case VorApi::Notification::Reload:
        return "reload";
    }
    return "changed";
}

std::string Dumped(const nlohmann::json& json) {
    return json.dump(-1, ' ', false, ReplaceWrongBytes);
}

EventStream::Text Shared(std::string text) {
    return std::make_shared<const std::string>(std::move(text));
}

std::vector<std::string> TextsOf(const std::vector<EventTopic>& topics) {
    std::vector<std::string> texts;
    texts.reserve(topics.size());
    for (const EventTopic& topic : topics) {
        texts.push_back(topic.text);
    }
    return texts;
}

/// Without the slash that may be at its end.
std::string PathOf(const RequestTarget& target) {
    const bool hasSlash = target.path.size() > 1 && target.path.ends_with('/');
    return target.path.substr(0, target.path.size() - (hasSlash ? 1 : 0));
}

} // namespace

struct EventStreams::Client {
    std::string name; ///< empty: listens to the resource of its only topic
    std::string address;
    bool isLoopback = false;
    std::vector<EventTopic> topics;
    Responder responder;
    std::weak_ptr<EventStream> stream = {};
};

/// The stream of a resource, which all clients that listen to it share.
class EventStreams::Feed final : public VorApi::IStreamReceiver {
public:
    Feed(EventStreams& streams, Source source)
        : streams(streams)
        , source(std::move(source))
        , stream(streams.environ.requests.OpenStream(this->source.first, *this, this->source.second)) {}

    void Send(const VorApi::VorDataTree& message) override { streams.SendMessage(source, message.Dump(false)); }
    std::string Description() const override { return "HTTP clients of " + source.first; }
    void Abort() override { streams.EndListeners(source); }

private:
    EventStreams& streams;
    const Source source;
    const std::unique_ptr<VorRest::RequestProcessor::Stream> stream;
};

EventStreams::EventStreams(Environ given)
    : environ(std::move(given))
    , history(environ.boot, environ.limits.history)
    , beat([this](Vor::AsyncTimer&) { Beat(); }) {
    for (VorApi::IResource* const resource : environ.router.Resources()) {
        subscriptions.emplace_back(resource, resource->NotificationEvent().Add(listeners.Guarded(
                                                 [this](VorApi::Notification code, const VorApi::IResource&,
                                                        const std::string& path) { Notice(code, path); })));
    }
    beat.Start(BeatPeriod, false);
}

EventStreams::~EventStreams() {
    Vor::CleanUp([this] {
        for (auto& [resource, handler] : subscriptions) {
            resource->NotificationEvent().Remove(handler);
        }
    });
}

HttpResponse EventStreams::Open(const RequestTarget& target, const HttpRequest& request, Responder responder) {
    RequireRoom(request);
    const std::string path = PathOf(target);
    return path == EventsPath ? OpenTopics(target, request, std::move(responder))
                              : OpenResource(EventTopic::OfResource(path, target.query), request, std::move(responder));
}

HttpResponse EventStreams::OpenTopics(const RequestTarget& target, const HttpRequest& request, Responder responder) {
    std::vector<std::string> texts;
    for (const auto& [name, value] : target.query) {
        if (name == "topic") {
            texts.push_back(value);
        }
    }
    Client client{.name = RandomText(NameBytes),
                  .address = request.peerAddress,
                  .isLoopback = request.peerIsLoopback,
                  .topics = ParseTopics(texts),
                  .responder = std::move(responder)};
    OpenFeeds(client.topics);

    const auto stream = std::make_shared<EventStream>(environ.limits.waiting);
    const nlohmann::json hello = {{"boot", environ.boot},
                                  {"stream", client.name},
                                  {"version", VOR_VERSION},
                                  {"topics", TextsOf(client.topics)},
                                  {"_links", {{"self", {{"href", std::string(EventsPath) + '/' + client.name}}}}}};
    stream->Push(Shared("retry: 1000\n" + EventText("hello", "", hello.dump())));
    if (const auto id = request.fields.Find("Last-Event-ID"); id && !id->empty()) {
        if (const auto missed = history.Since(*id, client.topics, environ.limits.waiting)) {
            for (const EventStream::Text& text : *missed) {
                stream->Push(text);
            }
        } else {
            const nlohmann::json gap = {{"lastEventId", *id}};
            stream->Push(Shared(EventText("gap", "", Dumped(gap))));
        }
    }
    return Add(std::move(client), stream);
}

HttpResponse EventStreams::OpenResource(EventTopic topic, const HttpRequest& request, Responder responder) {
    Client client{.name = "",
                  .address = request.peerAddress,
                  .isLoopback = request.peerIsLoopback,
                  .topics = {std::move(topic)},
                  .responder = std::move(responder)};
    OpenFeeds(client.topics);
    return Add(std::move(client), std::make_shared<EventStream>(environ.limits.waiting));
}

HttpResponse EventStreams::Add(Client client, const std::shared_ptr<EventStream>& stream) {
    client.stream = stream;
    clients.push_back(std::move(client));
    return {.status = 200,
            .fields = {{"Content-Type", "text/event-stream"}, {"Cache-Control", "no-store"}},
            .stream = stream};
}

void EventStreams::RequireRoom(const HttpRequest& request) {
    RemoveGone();
    if (clients.size() >= environ.limits.streams) {
        Vor::Throw(yERROR_BUSY, "There are %u streams of events already, which is the limit.", clients.size());
    }
    const auto ofAddress =
        std::ranges::count_if(clients, [&](const Client& client) { return client.address == request.peerAddress; });
    if (!request.peerIsLoopback && static_cast<std::size_t>(ofAddress) >= environ.limits.streamsPerAddress) {
        Vor::Throw(yERROR_BUSY, "There are %u streams of events of this address already, which is the limit.",
                   static_cast<std::size_t>(ofAddress));
    }
}

void EventStreams::RemoveGone() {
    std::erase_if(clients, [](const Client& client) {
        const auto stream = client.stream.lock();
        return stream == nullptr || stream->Ended();
    });
    std::set<Source> sources;
    for (const Client& client : clients) {
        for (const EventTopic& topic : client.topics) {
            if (topic.kind == EventTopic::Kind::Stream) {
                sources.emplace(topic.path, topic.query);
            }
        }
    }
    std::erase_if(feeds, [&](const auto& feed) { return !sources.contains(feed.first); });
}

std::vector<std::string> EventStreams::Topics() const {
    return EventTopic::All(environ.services);
}

std::vector<std::string> EventStreams::TopicsOf(const std::string& name) {
    return TextsOf(ClientOf(name).topics);
}

void EventStreams::ChangeTopics(const std::string& name, const std::vector<std::string>& add,
                                const std::vector<std::string>& remove) {
    Client& client = ClientOf(name);
    std::vector<std::string> texts = TextsOf(client.topics);
    texts.insert(texts.end(), add.begin(), add.end());
    std::vector<EventTopic> topics = ParseTopics(texts);
    for (const std::string& text : remove) {
        std::erase(topics, EventTopic::Parse(text, environ.router, environ.services));
    }
    OpenFeeds(topics);
    client.topics = std::move(topics);
}

EventStreams::Client& EventStreams::ClientOf(const std::string& name) {
    RemoveGone();
    const auto found = std::ranges::find(clients, name, &Client::name);
    if (found == clients.end() || name.empty()) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no stream %s.", name);
    }
    return *found;
}

std::vector<EventTopic> EventStreams::ParseTopics(const std::vector<std::string>& texts) const {
    std::vector<EventTopic> topics;
    for (const std::string& text : texts) {
        EventTopic topic = EventTopic::Parse(text, environ.router, environ.services);
        if (std::ranges::find(topics, topic) == topics.end()) {
            topics.push_back(std::move(topic));
        }
        if (topics.size() > environ.limits.topics) {
            Vor::Throw(yERROR_FORMAT, "A stream has at most %u topics.", environ.limits.topics);
        }
    }
    return topics;
}

void EventStreams::OpenFeeds(const std::vector<EventTopic>& topics) {
    for (const EventTopic& topic : topics) {
        const Source source(topic.path, topic.query);
        if (topic.kind == EventTopic::Kind::Stream && !feeds.contains(source)) {
            feeds.emplace(source, std::make_unique<Feed>(*this, source));
        }
    }
}

void EventStreams::Notice(VorApi::Notification code, const std::string& path) {
    bool isFirst = false;
    {
        const std::lock_guard guard(mutex);
        const PendingNotice notice{code, path};
        if (std::ranges::find(notices, notice) == notices.end()) {
            isFirst = notices.empty();
            notices.push_back(notice);
        }
    }
    if (isFirst) {
        runner.Run([this] { SendNotices(); });
    }
}

void EventStreams::SendNotices() {
    std::vector<PendingNotice> sent;
    {
        const std::lock_guard guard(mutex);
        sent.swap(notices);
    }
    for (const auto& [code, path] : sent) {
        nlohmann::json data = {{"code", TextOf(code)}, {"path", path}};
        if (const auto tag = environ.revisions.TagOf(path)) {
            data["revision"] = tag->substr(1, tag->size() - 2);
        }
        Send(history.Add({.kind = EventTopic::Kind::Notice,
                          .path = path,
                          .isReload = code == VorApi::Notification::Reload,
                          .text = nullptr},
                         "notice", data.dump()));
    }
}

void EventStreams::SendState(const nlohmann::json& changes) {
    Send(history.Add({.kind = EventTopic::Kind::State, .path = "", .text = nullptr}, "state", Dumped(changes)));
}

void EventStreams::SendProblem(const nlohmann::json& change) {
    Send(history.Add({.kind = EventTopic::Kind::Problems, .path = "", .text = nullptr}, "problems", Dumped(change)));
}

void EventStreams::SendLogEntry(const nlohmann::json& entry) {
    const EventStream::Text text = Shared(EventText("log", "", Dumped(entry)));
    for (const Client& client : clients) {
        if (std::ranges::find(client.topics, EventTopic::Kind::Log, &EventTopic::kind) != client.topics.end()) {
            Push(client, text);
        }
    }
}

void EventStreams::Send(const NumberedEvent& event) {
    for (const Client& client : clients) {
        if (event.IsFor(client.topics)) {
            Push(client, event.text);
        }
    }
}

bool EventStreams::Listens(const EventTopic& topic, const Source& source) {
    return topic.kind == EventTopic::Kind::Stream && topic.path == source.first && topic.query == source.second;
}

void EventStreams::SendMessage(const Source& source, const std::string& json) {
    std::string key = source.first;
    for (const auto& [name, value] : source.second) {
        key.append(";").append(name).append("=").append(value);
    }
    EventStream::Text message;
    EventStream::Text named;
    for (const Client& client : clients) {
        const auto topic =
            std::ranges::find_if(client.topics, [&](const EventTopic& wanted) { return Listens(wanted, source); });
        if (topic == client.topics.end()) {
            continue;
        }
        EventStream::Text& text = client.name.empty() ? message : named;
        if (text == nullptr) {
            text = Shared(EventText(topic->EventName(), "", json));
        }
        Push(client, text, key);
    }
}

void EventStreams::EndListeners(const Source& source) {
    for (const Client& client : clients) {
        const auto stream = client.stream.lock();
        const bool listens =
            std::ranges::any_of(client.topics, [&](const EventTopic& topic) { return Listens(topic, source); });
        if (stream != nullptr && listens) {
            stream->End();
            client.responder.Wake();
        }
    }
}

void EventStreams::Beat() {
    RemoveGone();
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    const EventStream::Text text = Shared(EventText("beat", "", nlohmann::json{{"t", time}}.dump()));
    for (const Client& client : clients) {
        if (!client.name.empty()) {
            Push(client, text, "beat");
        }
    }
}

void EventStreams::Push(const Client& client, EventStream::Text text, const std::string& key) {
    if (const auto stream = client.stream.lock()) {
        stream->Push(std::move(text), key);
        client.responder.Wake();
    }
}

} // namespace Sensor::Http
