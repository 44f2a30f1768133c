// Streams of events of the started program: what their clients miss, and what they don't.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/HttpConnection.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Services/Ascii/TextClient.h"
#include "Tests/Support/Threads.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

using Json = nlohmann::json;
using Services::Ascii::TextClient;
using Texts = std::vector<std::string>;

constexpr const char* Service = "/controls/modbus";

struct Event {
    std::string name;
    std::string id;
    Json data;
};

/// A client of a stream of events.
class Listener {
public:
    explicit Listener(const HttpClient& http, const std::string& topic = "notice", const std::string& lastId = "")
        : stream(http.Stream("/events?topic=" + topic, lastId.empty() ? Texts{} : Texts{"Last-Event-ID: " + lastId})) {
        EXPECT_EQ(Next().name, "hello") << stream.Errors();
    }

    /// The next event that is no beat; one without a name when the stream ends or the deadline passes before.
    Event Next() {
        Event event;
        for (auto line = stream.WaitForLine(""); line; line = stream.WaitForLine("")) {
            const auto colon = line->find(": ");
            const std::string value = line->substr(colon == std::string::npos ? line->size() : colon + 2);
            if (line->starts_with("event")) {
                event.name = value;
            } else if (line->starts_with("id")) {
                event.id = value;
            } else if (line->starts_with("data")) {
                event.data = Json::parse(value);
            } else if (line->empty() && event.name != "beat") {
                return event;
            } else if (line->empty()) {
                event = {};
            }
        }
        return {};
    }

private:
    Program stream;
};

/// What a notice says, in a line.
std::string LineOf(const Event& event) {
    return event.data.at("code").get<std::string>() + ' ' + event.data.at("path").get<std::string>() + ' ' +
           event.data.value("revision", "");
}

class HttpEventsTest : public testing::Test {
protected:
    HttpEventsTest()
        : loader(sensor.WaitForAsciiPort())
        , http(HttpClient::Of(sensor))
        , editor(http.Port()) {
        EXPECT_TRUE(sensor.Process().WaitForLine("Scanning."));
        tag = editor.Ask("GET", Service).Field("etag");
    }

    /// Changes the service if it is still as after the last edit. Returns the status; `tag` is the present one then.
    int Edit() {
        const HttpAnswer answer =
            editor.Ask("PATCH", Service, {{"parameters", {{"idleTimeout", ++value}}}}, {"If-Match: " + tag});
        tag = answer.Field("etag");
        return answer.status;
    }
    /// The line of the notice of the last edit.
    std::string EditedLine() const { return std::string("changed ") + Service + ' ' + tag.substr(1, tag.size() - 2); }

    VirtualSensor sensor;
    TextClient loader;
    const HttpClient http;
    HttpConnection editor;
    int value = 100;
    std::string tag;
};

TEST_F(HttpEventsTest, ALoadIsOneReloadAndNoEditIsLost) {
    const Answer copied =
        RunToEnd({VirtualSensor::File(), "--data", sensor.DataFolder(), "jobs", "copy", "demo", "other"});
    ASSERT_EQ(copied.status, 0) << copied.errors;
    Listener listener(http);
    Texts expected;
    std::size_t before = 0; // the place of the last edit before the load
    std::string loaded;
    int stale = 0;
    const auto edit = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const int status = Edit();
            if (status == 200) {
                expected.push_back(EditedLine());
                continue;
            }
            EXPECT_EQ(status, 412);
            before = expected.size() - 1;
            loaded = EditedLine();
            expected.emplace_back("reload /controls ");
            ++stale;
        }
    };
    edit(20);
    loader.Send("LOADJOB other\r\n");
    edit(200);
    EXPECT_EQ(loader.Line(), "OK");
    edit(20);
    EXPECT_EQ(stale, 1) << "the load, which changes the service, is noticed once";
    EXPECT_EQ(editor.Ask("PATCH", "/controls/ascii", {{"parameters", {{"idleTimeout", 99}}}}).status, 200);

    Texts heard;
    int jobs = 0;
    for (Event event = listener.Next(); event.name == "notice" && event.data.at("path") != "/controls/ascii";
         event = listener.Next()) {
        if (event.data.at("path") == "/sensor/jobs") {
            ++jobs;
        } else {
            heard.push_back(LineOf(event));
        }
    }
    EXPECT_EQ(jobs, 1) << "another job is loaded";
    // A notice has the revision that the service has when it is sent, which may be behind the load.
    ASSERT_EQ(heard.size(), expected.size());
    if (heard[before] == loaded) {
        heard[before] = expected[before];
    }
    EXPECT_EQ(heard, expected);
}

TEST_F(HttpEventsTest, AClientThatComesBackMissesNothing) {
    std::string lastId;
    {
        Listener listener(http);
        EXPECT_EQ(Edit(), 200);
        const Event event = listener.Next();
        EXPECT_EQ(LineOf(event), EditedLine());
        lastId = event.id;
    }
    Texts missed;
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Edit(), 200);
        missed.push_back(EditedLine());
    }
    Listener listener(http, "notice", lastId);
    for (const std::string& line : missed) {
        ASSERT_EQ(LineOf(listener.Next()), line);
    }
    EXPECT_EQ(Edit(), 200);
    EXPECT_EQ(LineOf(listener.Next()), EditedLine());
}

TEST_F(HttpEventsTest, AClientThatComesBackTooLateHearsOfTheGap) {
    constexpr int Kept = 4096;
    std::string lastId;
    {
        Listener listener(http);
        EXPECT_EQ(Edit(), 200);
        lastId = listener.Next().id;
    }
    for (int i = 0; i <= Kept; ++i) {
        ASSERT_EQ(Edit(), 200);
    }
    Listener late(http, "notice", lastId);
    const Event gap = late.Next();
    EXPECT_EQ(gap.name, "gap");
    EXPECT_EQ(gap.data, (Json{{"lastEventId", lastId}}));
    EXPECT_EQ(Edit(), 200);
    EXPECT_EQ(LineOf(late.Next()), EditedLine()) << "it goes on from here";

    VirtualSensor another;
    Listener ofAnotherRun(HttpClient::Of(another), "notice", lastId);
    EXPECT_EQ(ofAnotherRun.Next().name, "gap");
}

TEST_F(HttpEventsTest, FramesComeAsTheyAreAskedFor) {
    Listener listener(http, "scan;rate=25;points=8");
    const Event first = listener.Next();
    ASSERT_EQ(first.name, "scan");
    EXPECT_EQ(first.id, "");
    EXPECT_LE(first.data.at("x").size(), 8U);
    const Event second = listener.Next();
    ASSERT_EQ(second.name, "scan");
    EXPECT_GT(second.data.at("frame"), first.data.at("frame"));
    EXPECT_EQ(http.Get("/sensor").body.at("frameRate"), 10.0);

    const Json& greatest = first.data.at("values").at(0);
    const HttpAnswer answer = http.Get("/sensor/scan/history?source=" + greatest.at("source").get<std::string>());
    ASSERT_EQ(answer.status, 200);
    const Json& frames = answer.body.at("frames");
    const auto frame = std::find(frames.begin(), frames.end(), first.data.at("frame"));
    ASSERT_NE(frame, frames.end());
    const auto place = static_cast<std::size_t>(frame - frames.begin());
    EXPECT_EQ(answer.body.at("columns").at(0).at("values").at(place), greatest.at("value"));
    EXPECT_EQ(http.Get("/sensor/scan/history?n=5000").status, 422);
}

TEST_F(HttpEventsTest, ThereAreSixtyFourStreams) {
    const auto open = [this] {
        auto connection = std::make_unique<HttpConnection>(http.Port());
        connection->Send("GET", "/events?topic=notice", nullptr, {"Accept: text/event-stream"});
        return connection;
    };
    std::vector<std::unique_ptr<HttpConnection>> streams;
    for (int i = 0; i < 64; ++i) {
        streams.push_back(open());
        ASSERT_EQ(streams.back()->Receive().status, 200) << i;
    }
    const HttpAnswer refused = open()->Receive();
    EXPECT_EQ(refused.status, 503);
    EXPECT_NE(refused.Field("retry-after"), "");
    EXPECT_EQ(refused.body.at("detail"), "There are 64 streams of events already, which is the limit.");
    streams.pop_back();
    EXPECT_TRUE(WaitUntil([&] { return open()->Receive().status == 200; })) << "the place of who has gone is free";
}

} // namespace
} // namespace Tests
