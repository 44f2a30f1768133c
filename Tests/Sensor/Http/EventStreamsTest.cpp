#include "Sensor/Http/EventStreams.h"

#include "Sensor/Http/ResponderTarget.h"
#include "Tests/VorControl/Protocol/ResourceFixture.h"
#include "VorApi/StreamResourceBase.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Sensor::Http {
namespace {

using Json = nlohmann::json;
using Tests::StatusOf;
using VorApi::Notification;

constexpr const char* Metrics = "/controls/full/metrics";

class FakeRevisions : public IRevisions {
public:
    std::optional<std::string> TagOf(const std::string& path) const override {
        return path.starts_with("/controls/") ? std::optional("\"b0-" + std::to_string(revision) + "\"") : std::nullopt;
    }

    int revision = 1;
};

/// A connection without a server.
class Connection : public Responder::Target {
public:
    void Respond(HttpResponse) override {}
    bool IsWanted() const override { return true; }
    void Wake() override { ++wakes; }

    int wakes = 0;
};

/// One event as a client understands it.
struct Event {
    std::string name;
    std::string id;
    std::string data;

    bool operator==(const Event&) const = default;
};

void PrintTo(const Event& event, std::ostream* out) {
    *out << event.name << " " << event.id << " " << event.data;
}

/// A client with its stream.
class Listener {
public:
    explicit Listener(std::shared_ptr<IBodyStream> stream)
        : stream(std::move(stream)) {}

    std::vector<Event> Read() {
        std::string text;
        stream->Read(text);
        std::vector<Event> events(1);
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (line.empty()) {
                events.emplace_back();
                continue;
            }
            const auto colon = line.find(": ");
            std::map<std::string, std::string*> fields{
                {"event", &events.back().name}, {"id", &events.back().id}, {"data", &events.back().data}};
            if (const auto field = fields.find(line.substr(0, colon)); field != fields.end()) {
                *field->second = line.substr(colon + 2);
            }
        }
        EXPECT_EQ(events.back(), Event()) << "an event without its end";
        events.pop_back();
        return events;
    }

    /// The names of the events, beats left out.
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const Event& event : Read()) {
            if (event.name != "beat") {
                names.push_back(event.name);
            }
        }
        return names;
    }

    std::shared_ptr<IBodyStream> stream;
};

class EventStreamsTest : public Tests::ResourceFixture {
protected:
    EventStreams& Streams(const EventStreams::Limits& limits = {}) {
        if (!streams) {
            streams.emplace(EventStreams::Environ{.boot = "b0",
                                                  .router = router,
                                                  .requests = requests,
                                                  .revisions = revisions,
                                                  .services = manager->List(),
                                                  .limits = limits});
        }
        return *streams;
    }

    Listener Open(const std::string& path, const std::vector<std::string>& topics = {},
                  const std::optional<std::string>& lastId = std::nullopt, const std::string& address = "127.0.0.1") {
        RequestTarget target{path, {{"other", "x"}}};
        for (const std::string& topic : topics) {
            target.query.emplace_back("topic", topic);
        }
        HttpRequest request{.method = "GET", .target = path, .fields = {}, .body = "", .peerAddress = address};
        request.peerIsLoopback = address == "127.0.0.1";
        if (lastId) {
            request.fields.Add("last-event-id", *lastId);
        }
        connection = std::make_shared<Connection>();
        const HttpResponse response = Streams().Open(target, request, Responder(connection));
        EXPECT_EQ(response.status, 200U);
        EXPECT_EQ(response.fields.Find("Content-Type"), "text/event-stream");
        EXPECT_EQ(response.fields.Find("Cache-Control"), "no-store");
        return Listener(response.stream);
    }

    /// A stream whose hello is read, with its name.
    std::pair<Listener, std::string> OpenEvents(const std::vector<std::string>& topics) {
        Listener listener = Open("/events", topics);
        return {listener, Json::parse(listener.Read().at(0).data).at("stream")};
    }

    void Report() {
        reporter.source.figures.dropCount = reporter.source.figures.dropCount.Get() + 1;
        reporter.event.Raise(reporter.source);
    }

    FakeRevisions revisions;
    std::shared_ptr<Connection> connection;
    std::optional<EventStreams> streams;
};

TEST_F(EventStreamsTest, BeginsWithHelloThenBeatsEachSecond) {
    Listener listener = Open("/events", {"notice", "state"});
    const std::vector<Event> events = listener.Read();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].name, "hello");
    EXPECT_EQ(events[0].id, "");
    const Json hello = Json::parse(events[0].data);
    EXPECT_EQ(hello["boot"], "b0");
    EXPECT_EQ(hello["topics"], (Json{"notice", "state"}));
    const std::string name = hello["stream"];
    EXPECT_EQ(name.size(), 32U);
    EXPECT_EQ(name.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(hello["_links"]["self"]["href"], "/events/" + name);
    EXPECT_NE(OpenEvents({}).second, name);

    loop.Advance(std::chrono::seconds(1));
    const std::vector<Event> beats = listener.Read();
    ASSERT_EQ(beats.size(), 1U);
    EXPECT_EQ(beats[0].name, "beat");
    EXPECT_EQ(beats[0].id, "");
    EXPECT_TRUE(Json::parse(beats[0].data)["t"].is_number_unsigned());
    loop.Advance(std::chrono::seconds(3));
    EXPECT_EQ(listener.Read().size(), 1U) << "only the newest beat waits";
}

TEST_F(EventStreamsTest, ANoticeSaysWhatHasHappenedWhereAndTheRevision) {
    Listener listener = OpenEvents({"notice"}).first;
    revisions.revision = 7;
    Update("/controls/full", {{"parameters", {{"port", 503}}}});
    loop.RunReady();
    EXPECT_EQ(
        listener.Read(),
        (std::vector<Event>{{"notice", "b0:1", R"({"code":"changed","path":"/controls/full","revision":"b0-7"})"}}));
    EXPECT_GT(connection->wakes, 0);
    streams->Notice(Notification::Created, "/x");
    streams->Notice(Notification::Deleted, "/x");
    streams->Notice(Notification::Reload, "/controls");
    loop.RunReady();
    EXPECT_EQ(listener.Read(), (std::vector<Event>{{"notice", "b0:2", R"({"code":"created","path":"/x"})"},
                                                   {"notice", "b0:3", R"({"code":"deleted","path":"/x"})"},
                                                   {"notice", "b0:4", R"({"code":"reload","path":"/controls"})"}}));
}

TEST_F(EventStreamsTest, EqualNoticesAtTheSameTimeAreOne) {
    Listener listener = OpenEvents({"notice"}).first;
    for (int i = 0; i < 3; ++i) {
        streams->Notice(Notification::Changed, "/a");
        streams->Notice(Notification::Changed, "/b");
    }
    loop.RunReady();
    EXPECT_EQ(listener.Read().size(), 2U);
    streams->Notice(Notification::Changed, "/a");
    loop.RunReady();
    EXPECT_EQ(listener.Read().size(), 1U);
}

TEST_F(EventStreamsTest, AClientGetsItsTopicsOnly) {
    Listener notices = OpenEvents({"notice"}).first;
    Listener ofBare = OpenEvents({"notice:/controls/bare/"}).first;
    Listener both = OpenEvents({"notice:/controls/full", "notice", "state"}).first;
    Listener none = OpenEvents({}).first;
    streams->Notice(Notification::Changed, "/controls/full");
    streams->SendState({{"runState", "ready"}});
    loop.RunReady();
    EXPECT_EQ(notices.Names(), Texts{"notice"});
    EXPECT_EQ(ofBare.Names(), Texts{});
    EXPECT_EQ(both.Read(), (std::vector<Event>{
                               {"state", "b0:1", R"({"runState":"ready"})"},
                               {"notice", "b0:2", R"({"code":"changed","path":"/controls/full","revision":"b0-1"})"}}));
    EXPECT_EQ(none.Names(), Texts{});
    Report();
    EXPECT_EQ(both.Names(), Texts{});
}

TEST_F(EventStreamsTest, APathOfATopicMayBeWrittenInOtherWays) {
    for (const char* const path : {"/controls/bare", "/controls/bare/", "/controls/%62are"}) {
        Listener ofBare = OpenEvents({std::string("notice:") + path}).first;
        streams->Notice(Notification::Changed, "/controls/bare");
        loop.RunReady();
        EXPECT_EQ(ofBare.Names(), Texts{"notice"}) << path;
    }
    const auto [listener, name] = OpenEvents({"notice:/controls/bare", "notice:/controls/%62are/"});
    EXPECT_EQ(streams->TopicsOf(name), Texts{"notice:/controls/bare"}) << "the same topic";
}

TEST_F(EventStreamsTest, AnUnknownTopicIsRefusedWithTheListOfTopics) {
    EXPECT_FAILURE(
        Open("/events", {"state", "weather"}), yERROR_FORMAT,
        "There is no topic \"weather\". Topics are: notice, state, problems, log, scan, io, metrics:bare, "
        "metrics:full, and notice:PATH for a resource and all below it. What \"scan\" sends is determined by "
        "\";rate=\" and \";points=\" behind it, what \"io\" sends by \";rate=\" and \";edges=\".");
    for (const char* topic : {"",
                              "notice:",
                              "notice:x",
                              "notice:/nothing",
                              "notice:/controls/%",
                              "notice:/controls/%00",
                              "metrics",
                              "metrics:",
                              "metrics:nobody",
                              "metrics:/controls/full",
                              "State",
                              "notice ",
                              "scanner",
                              "scan;",
                              "scan;rate",
                              "scan;rate=1;",
                              "scan;rate=1;rate=2",
                              "scan;points=1;x=2",
                              "scan rate=1",
                              "scan;edges=1",
                              "io;points=1",
                              "io;",
                              "ioedges=1"}) {
        EXPECT_EQ(StatusOf([&] { Open("/events", {topic}); }), yERROR_FORMAT) << topic;
    }
    EXPECT_EQ(Streams().Topics(),
              (Texts{"notice", "state", "problems", "log", "scan", "io", "metrics:bare", "metrics:full"}));
}

TEST_F(EventStreamsTest, ProblemsHaveIdsAndAreKept) {
    Listener problems = OpenEvents({"problems"}).first;
    Listener states = OpenEvents({"state"}).first;
    streams->SendProblem({{"op", "cleared"}, {"id", 1}});
    EXPECT_EQ(problems.Read(), (std::vector<Event>{{"problems", "b0:1", R"({"id":1,"op":"cleared"})"}}));
    EXPECT_EQ(states.Names(), Texts{});
    streams->SendProblem({{"op", "raised"}, {"text", "\xFF"}});
    EXPECT_EQ(Open("/events", {"problems"}, "b0:1").Names(), (Texts{"hello", "problems"}));
}

TEST_F(EventStreamsTest, EntriesOfTheLogHaveNoIds) {
    Listener log = OpenEvents({"log"}).first;
    Listener others = OpenEvents({"notice", "state", "problems"}).first;
    streams->SendLogEntry({{"number", 1}});
    streams->SendLogEntry({{"number", 2}});
    EXPECT_EQ(log.Read(), (std::vector<Event>{{"log", "", R"({"number":1})"}, {"log", "", R"({"number":2})"}}));
    EXPECT_EQ(others.Names(), Texts{});
    streams->SendState(Json::object());
    EXPECT_EQ(Open("/events", {"log", "state"}, "b0:0").Names(), (Texts{"hello", "state"}));
}

/// Sends to each stream what was asked of it.
class EchoResource : public VorApi::StreamResourceBase {
public:
    unsigned int StartStream(const VorApi::RequestInfoEx& request, VorApi::IStreamReceiver& receiver) override {
        std::string asked;
        for (const auto& [name, value] : request.GetQuery()) {
            asked += name + value;
        }
        receivers[asked] = &receiver;
        ids[++last] = asked;
        return last;
    }
    void StopStream(unsigned int id) override { receivers.erase(ids.at(id)); }
    StreamResourceBase* StreamableProvider() override { return this; }

    void Send() {
        for (const auto& [asked, receiver] : receivers) {
            receiver->Send(VorApi::VorDataTree::FromJson(asked));
        }
    }

    std::map<std::string, VorApi::IStreamReceiver*> receivers;
    std::map<unsigned int, std::string> ids;
    unsigned int last = 0;
};

TEST_F(EventStreamsTest, EachWayToAskForTheScanIsAStreamOfTheResource) {
    EchoResource scan;
    router.Register("/sensor/scan", scan);
    Listener slow = OpenEvents({"scan;rate=1;points=2"}).first;
    Listener same = OpenEvents({"scan;rate=1;points=2"}).first;
    auto [both, name] = OpenEvents({"scan", "scan;rate=25"});
    Listener plain = Open("/sensor/scan");
    EXPECT_EQ(scan.receivers.size(), 3U);
    scan.Send();
    scan.Send();
    const std::vector<Event> newest{{"scan", "", R"("rate1points2")"}};
    EXPECT_EQ(slow.Read(), newest) << "only the newest one waits";
    EXPECT_EQ(same.Read(), newest);
    EXPECT_EQ(both.Read(), (std::vector<Event>{{"scan", "", R"("")"}, {"scan", "", R"("rate25")"}}));
    EXPECT_EQ(plain.Read(), (std::vector<Event>{{"", "", R"("")"}}));
    streams->ChangeTopics(name, {}, {"scan;rate=25"});
    EXPECT_EQ(streams->TopicsOf(name), Texts{"scan"});
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(scan.receivers.size(), 2U);
    streams.reset();
    EXPECT_TRUE(scan.receivers.empty());
    router.Deregister("/sensor/scan", true);
}

TEST_F(EventStreamsTest, OutputsAreAStreamAsTheScanIs) {
    EchoResource io;
    router.Register("/sensor/io", io);
    Listener few = OpenEvents({"io;edges=2;rate=1"}).first;
    Listener plain = Open("/sensor/io");
    io.Send();
    io.Send();
    EXPECT_EQ(few.Read(), (std::vector<Event>{{"io", "", R"("edges2rate1")"}})) << "only the newest one waits";
    EXPECT_EQ(plain.Read(), (std::vector<Event>{{"", "", R"("")"}}));
    streams.reset();
    EXPECT_TRUE(io.receivers.empty());
    router.Deregister("/sensor/io", true);
}

TEST_F(EventStreamsTest, FiguresComeInTheirOwnEventAndWithoutOthersInAMessage) {
    Listener events = OpenEvents({"metrics:full"}).first;
    Listener plain = Open(Metrics);
    EXPECT_EQ(reporter.event.Count(), 1U) << "one source for all";
    Report();
    Report();
    const std::vector<Event> named = events.Read();
    ASSERT_EQ(named.size(), 1U) << "only the newest figures wait";
    EXPECT_EQ(named[0].name, "metrics:full");
    EXPECT_EQ(named[0].id, "");
    EXPECT_EQ(Json::parse(named[0].data), Read(Metrics).ToJson());
    EXPECT_EQ(plain.Read(), (std::vector<Event>{{"", "", named[0].data}}));
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(plain.Read().size(), 0U) << "the stream of a resource has no beat";
}

TEST_F(EventStreamsTest, ASourceIsStoppedWhenNobodyListens) {
    {
        const Listener events = OpenEvents({"metrics:full"}).first;
        const Listener plain = Open(std::string(Metrics) + "/");
        loop.Advance(std::chrono::seconds(1));
        EXPECT_EQ(reporter.event.Count(), 1U);
    }
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(reporter.event.Count(), 0U);
    const Listener events = OpenEvents({"metrics:full"}).first;
    EXPECT_EQ(reporter.event.Count(), 1U);
    streams.reset();
    EXPECT_EQ(reporter.event.Count(), 0U);
}

TEST_F(EventStreamsTest, AResourceWithoutAStreamFails) {
    EXPECT_EQ(StatusOf([&] { Open("/controls/full"); }), yERROR_UNIMPLEMENTED);
    EXPECT_EQ(StatusOf([&] { Open("/nothing"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusOf([&] { Open("/controls/nobody/metrics"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(StatusOf([&] { Open("/events", {"metrics:bare"}); }), yERROR_NOT_FOUND) << "it has no figures";
}

TEST_F(EventStreamsTest, TheTopicsOfAnOpenStreamChange) {
    auto [listener, name] = OpenEvents({"notice"});
    streams->ChangeTopics(name, {"state", "metrics:full"}, {"notice"});
    EXPECT_EQ(streams->TopicsOf(name), (Texts{"state", "metrics:full"}));
    streams->Notice(Notification::Changed, "/controls/full");
    streams->SendState(Json::object());
    Report();
    loop.RunReady();
    EXPECT_EQ(listener.Names(), (Texts{"state", "metrics:full"}));
    streams->ChangeTopics(name, {}, {"metrics:full", "notice"});
    EXPECT_EQ(streams->TopicsOf(name), Texts{"state"});
    Report();
    EXPECT_EQ(listener.Names(), Texts{});
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(reporter.event.Count(), 0U);
}

TEST_F(EventStreamsTest, AChangeWithAnUnknownTopicChangesNothing) {
    auto [listener, name] = OpenEvents({"notice"});
    EXPECT_EQ(StatusOf([&] { streams->ChangeTopics(name, {"state", "weather"}, {}); }), yERROR_FORMAT);
    EXPECT_EQ(StatusOf([&] { streams->ChangeTopics(name, {"state"}, {"weather"}); }), yERROR_FORMAT);
    EXPECT_EQ(streams->TopicsOf(name), Texts{"notice"});
    const Listener plain = Open(Metrics);
    for (const std::string other : {"", "0123", "NAME"}) {
        EXPECT_EQ(StatusOf([&] { streams->ChangeTopics(other, {"state"}, {}); }), yERROR_NOT_FOUND) << other;
        EXPECT_EQ(StatusOf([&] { streams->TopicsOf(other); }), yERROR_NOT_FOUND) << other;
    }
    listener.stream.reset();
    EXPECT_EQ(StatusOf([&] { streams->TopicsOf(name); }), yERROR_NOT_FOUND) << "its client has gone";
}

TEST_F(EventStreamsTest, AStreamHasALimitedNumberOfTopics) {
    Streams({.topics = 2});
    auto [listener, name] = OpenEvents({"notice", "notice", "state"});
    EXPECT_EQ(streams->TopicsOf(name), (Texts{"notice", "state"})) << "none twice";
    EXPECT_FAILURE(streams->ChangeTopics(name, {"metrics:full"}, {}), yERROR_FORMAT, "A stream has at most 2 topics.");
}

TEST_F(EventStreamsTest, AClientThatComesBackGetsWhatItHasMissed) {
    Streams();
    streams->Notice(Notification::Changed, "/controls/full");
    loop.RunReady();
    streams->SendState(Json::object());
    EXPECT_EQ(Open("/events", {"notice", "state"}, "b0:0").Names(), (Texts{"hello", "notice", "state"}));
    EXPECT_EQ(Open("/events", {"notice", "state"}, "b0:1").Names(), (Texts{"hello", "state"}));
    EXPECT_EQ(Open("/events", {"notice"}, "b0:1").Names(), Texts{"hello"});
    EXPECT_EQ(Open("/events", {"notice", "state"}).Names(), Texts{"hello"}) << "it has never been here";
    EXPECT_EQ(Open("/events", {"notice", "state"}, "").Names(), Texts{"hello"}) << "it has had no event with an id";
}

TEST_F(EventStreamsTest, AClientThatHasMissedTooMuchGetsAGap) {
    Streams({.history = 1});
    streams->SendState(Json::object());
    streams->SendState(Json::object());
    for (const char* id : {"b0:0", "other:1", "x"}) {
        const std::vector<Event> events = Open("/events", {"state"}, id).Read();
        ASSERT_EQ(events.size(), 2U) << id;
        EXPECT_EQ(events[1], (Event{"gap", "", Json{{"lastEventId", id}}.dump()}));
    }
    EXPECT_EQ(Open("/events", {"state"}, "\xFF").Read().at(1).name, "gap") << "whatever the bytes are";
}

TEST_F(EventStreamsTest, AReaderThatDoesntReadIsClosedAndComesBackWithAGap) {
    Streams({.waiting = {.events = 3}});
    Listener lazy = Open("/events", {"state"});
    lazy.Read();
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(lazy.stream->Ended());
        streams->SendState(Json::object());
    }
    EXPECT_TRUE(lazy.stream->Ended());
    EXPECT_EQ(Open("/events", {"state"}, "b0:0").Names(), (Texts{"hello", "gap"}));
}

TEST_F(EventStreamsTest, BeatsAndFiguresNeverEndAStream) {
    Streams({.waiting = {.events = 3}});
    Listener lazy = Open("/events", {"metrics:full"});
    for (int i = 0; i < 10; ++i) {
        Report();
        loop.Advance(std::chrono::seconds(1));
    }
    EXPECT_FALSE(lazy.stream->Ended());
    EXPECT_EQ(lazy.Read().size(), 3U);
}

TEST_F(EventStreamsTest, ThereAreSixtyFourStreams) {
    std::vector<Listener> listeners;
    for (int i = 0; i < 64; ++i) {
        listeners.push_back(Open(i % 2 == 0 ? "/events" : Metrics));
    }
    EXPECT_FAILURE(Open("/events"), yERROR_BUSY, "There are 64 streams of events already, which is the limit.");
    EXPECT_EQ(StatusOf([&] { Open(Metrics); }), yERROR_BUSY);
    listeners.pop_back();
    EXPECT_EQ(StatusOf([&] { listeners.push_back(Open("/events")); }), yOK);
}

TEST_F(EventStreamsTest, AnAddressHasSixteenStreamsUnlessItIsThisMachine) {
    std::vector<Listener> listeners;
    for (int i = 0; i < 16; ++i) {
        listeners.push_back(Open("/events", {}, std::nullopt, "192.168.1.7"));
        listeners.push_back(Open("/events"));
    }
    EXPECT_FAILURE(Open("/events", {}, std::nullopt, "192.168.1.7"), yERROR_BUSY,
                   "There are 16 streams of events of this address already, which is the limit.");
    EXPECT_EQ(StatusOf([&] { Open("/events", {}, std::nullopt, "192.168.1.8"); }), yOK);
    EXPECT_EQ(StatusOf([&] { Open("/events"); }), yOK);
}

TEST_F(EventStreamsTest, AStreamHasWhatItsResourceSendsAndEndsWithIt) {
    class Aborting : public VorApi::StreamResourceBase {
    public:
        unsigned int StartStream(const VorApi::RequestInfoEx&, VorApi::IStreamReceiver& receiver) override {
            target = &receiver;
            return 1;
        }
        void StopStream(unsigned int) override { target = nullptr; }
        StreamResourceBase* StreamableProvider() override { return this; }

        VorApi::IStreamReceiver* target = nullptr;
    } resource;
    router.Register("/aborting", resource);
    Listener other = OpenEvents({"notice", "metrics:full"}).first;
    Listener listener = Open("/aborting");
    Report();
    EXPECT_EQ(listener.Read(), std::vector<Event>());
    EXPECT_EQ(other.Names(), Texts{"metrics:full"});
    const int wakes = connection->wakes;
    EXPECT_EQ(resource.target->Description(), "HTTP clients of /aborting");
    resource.target->Abort();
    EXPECT_TRUE(listener.stream->Ended());
    EXPECT_FALSE(other.stream->Ended());
    EXPECT_GT(connection->wakes, wakes);
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(resource.target, nullptr);
    streams.reset();
    router.Deregister("/aborting", true);
}

TEST_F(EventStreamsTest, NotificationsMayComeOnAnotherThreadWhileTheStreamsGo) {
    Streams();
    VorApi::IResource& resource = ResourceAt("/controls");
    std::atomic<int> raised = 0;
    std::atomic<bool> ends = false;
    std::thread raising([&] {
        while (!ends) {
            resource.NotificationEvent().Raise(Notification::Changed, resource, "/controls/full");
            ++raised;
        }
    });
    const auto waitForMore = [&] {
        const int before = raised;
        while (raised < before + 10) {
            std::this_thread::yield();
        }
    };
    waitForMore();
    streams.reset();
    waitForMore();
    ends = true;
    raising.join();
    loop.RunReady();
    EXPECT_EQ(resource.NotificationEvent().Count(), 0U);
}

TEST_F(EventStreamsTest, NobodyIsNotifiedAfterItsEnd) {
    Listener listener = OpenEvents({"notice"}).first;
    streams->Notice(Notification::Changed, "/controls/full");
    streams.reset();
    Update("/controls/full", {{"parameters", {{"port", 503}}}});
    loop.RunReady();
    EXPECT_EQ(listener.Read().size(), 0U);
}

} // namespace
} // namespace Sensor::Http
