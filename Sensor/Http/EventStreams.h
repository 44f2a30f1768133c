#pragma once

#include "Sensor/Http/EventHistory.h"
#include "Sensor/Http/EventStream.h"
#include "Sensor/Http/EventTopic.h"
#include "Sensor/Http/IEventStreams.h"
#include "Sensor/Http/IRevisions.h"
#include "Vor/AsyncRunner.h"
#include "Vor/AsyncTimer.h"
#include "VorApi/IResource.h"
#include "VorApi/IStreamReceiver.h"
#include "VorApi/RequestInfoEx.h"
#include "VorApi/Threads/CallGuard.h"
#include "VorRest/RequestProcessor.h"

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Http {

/// The streams of all clients: at "/events" one with the topics that its client wants, and at each resource that has
/// one, that. Main loop only, Notice() aside.
class EventStreams : public IEventStreams {
public:
    struct Limits {
        std::size_t streams = 64;
        std::size_t streamsPerAddress = 16; ///< clients on this machine aren't counted by address
        std::size_t topics = 64;            ///< of one stream
        std::size_t history = 4096;
        EventStream::Limits waiting = {}; ///< for one client
    };

    /// What the streams are about. All of it outlives them, and the resources that the router has at the construction
    /// do, too; they are those whose changes are noticed.
    struct Environ {
        std::string boot; ///< the id of this run of the program
        VorApi::ResourceRouter& router;
        VorRest::RequestProcessor& requests;
        const IRevisions& revisions;
        std::vector<std::string> services; ///< ids of those whose figures are topics
        Limits limits = {};
    };

    explicit EventStreams(Environ environ);
    ~EventStreams() override;
    EventStreams(const EventStreams&) = delete;
    EventStreams& operator=(const EventStreams&) = delete;

    /// Throws `yERROR_BUSY` when there are too many streams, and `yERROR_FORMAT` for an unknown topic.
    HttpResponse Open(const RequestTarget& target, const HttpRequest& request, Responder responder) override;

    /// The topics that there are without those of single paths.
    std::vector<std::string> Topics() const;
    /// The topics of the stream at "/events/NAME". Throws `yERROR_NOT_FOUND`.
    std::vector<std::string> TopicsOf(const std::string& name);
    /// Adds topics to a stream, then removes others. Throws `yERROR_NOT_FOUND` for an unknown stream and
    /// `yERROR_FORMAT` for an unknown topic or too many; then nothing has changed.
    void ChangeTopics(const std::string& name, const std::vector<std::string>& add,
                      const std::vector<std::string>& remove);

    /// Sends a notice from the main loop, soon. From any thread.
    void Notice(VorApi::Notification code, const std::string& path);
    /// Sends an event of the topic "state".
    void SendState(const nlohmann::json& changes);
    /// Sends an event of the topic "problems".
    void SendProblem(const nlohmann::json& change);
    /// Sends an event of the topic "log". It has no id, and nobody gets it who isn't there.
    void SendLogEntry(const nlohmann::json& entry);

private:
    struct Client;
    class Feed;
    using PendingNotice = std::pair<VorApi::Notification, std::string>;
    /// The path of a resource that has a stream, and what is asked of it.
    using Source = std::pair<std::string, VorApi::RequestInfoEx::Query>;

    HttpResponse OpenTopics(const RequestTarget& target, const HttpRequest& request, Responder responder);
    HttpResponse OpenResource(EventTopic topic, const HttpRequest& request, Responder responder);
    /// Forgets the clients that have gone and the resources that nobody listens to any more. Throws `yERROR_BUSY` when
    /// there is no room for this client.
    void RequireRoom(const HttpRequest& request);
    void RemoveGone();
    HttpResponse Add(Client client, const std::shared_ptr<EventStream>& stream);
    Client& ClientOf(const std::string& name);
    std::vector<EventTopic> ParseTopics(const std::vector<std::string>& texts) const;
    void OpenFeeds(const std::vector<EventTopic>& topics);
    void SendNotices();
    void Send(const NumberedEvent& event);
    void SendMessage(const Source& source, const std::string& json);
    void EndListeners(const Source& source);
    static bool Listens(const EventTopic& topic, const Source& source);
    void Beat();
    static void Push(const Client& client, EventStream::Text text, const std::string& key = std::string());

    const Environ environ;
    EventHistory history;
    std::vector<Client> clients;
    std::map<Source, std::unique_ptr<Feed>> feeds;
    std::vector<std::pair<VorApi::IResource*, VorApi::IResource::ResourceEvent::CallbackId>> subscriptions;
    Vor::AsyncTimer beat;

    /// Guards the notices. No other lock is taken while it is held.
    std::mutex mutex;
    std::vector<PendingNotice> notices; ///< in order, none twice; those that the main loop has still to send

    Vor::AsyncRunner runner;  ///< so near the end that nothing of it runs while the other members are destroyed
    Vor::CallGuard listeners; ///< of the subscriptions
};

} // namespace Sensor::Http
