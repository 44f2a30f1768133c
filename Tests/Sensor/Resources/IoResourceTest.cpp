#include "Sensor/Http/EventStreams.h"
#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Resources/IoDocument.h"
#include "Tests/Sensor/Resources/SensorFixture.h"
#include "Tests/Support/Signal.h"
#include "VorApi/Params/PropertyValue.h"

#include <chrono>
#include <cstddef>
#include <exception>
#include <future>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Resources {
namespace {

using Json = nlohmann::json;
using Tests::StatusOf;

class IoResourceTest : public SensorFixture {
protected:
    IoResourceTest() { device->Enable(true); }

    Json ReadIo(VorApi::RequestInfoEx::Query query = {}) {
        const VorRest::Answer answer = Ask({.path = "/sensor/io", .query = std::move(query)});
        if (answer.failure != nullptr) {
            std::rethrow_exception(answer.failure);
        }
        return answer.document.ToJson();
    }
    Json Port(std::size_t port) { return ReadIo().at("devices").at(0).at("ports").at(port); }
    void Set(const char* name, const std::string& text) {
        const auto params = std::dynamic_pointer_cast<Io::PortParams>(device->BeginUpdatePortParams(0));
        dynamic_cast<Vor::Properties::Value<std::string>&>(params->At(name)) = text;
        device->EndUpdatePortParams(0);
    }
    /// The documents that a stream has sent.
    static Json DocumentsIn(const std::shared_ptr<Http::IBodyStream>& stream) {
        std::string text;
        stream->Read(text);
        Json found = Json::array();
        constexpr std::string_view Begin = "event: io\ndata: ";
        for (auto at = text.find(Begin); at != std::string::npos; at = text.find(Begin, at + 1)) {
            const auto data = at + Begin.size();
            found.push_back(Json::parse(text.substr(data, text.find('\n', data) - data)));
        }
        return found;
    }

    std::shared_ptr<Io::OutputDevice> device = sensor.Devices().Find("io-0");
};

TEST_F(IoResourceTest, ShowsTheDeviceWithItsPorts) {
    Set("name", "Gate");
    device->SetOutputState(0, true, 7);
    Json shown = ReadIo().at("devices").at(0);
    const Json ports = shown.at("ports");
    shown.erase("ports");
    EXPECT_EQ(shown, (Json{{"engineId", "virtual"},
                           {"providerId", "io-0"},
                           {"model", "Virtual I/O 4"},
                           {"serialNumber", "1001"},
                           {"enabled", true}}));
    ASSERT_EQ(ports.size(), 4U);
    const Json edge = {{"number", 1}, {"time", 0}, {"frame", nullptr}, {"high", true}};
    EXPECT_EQ(ports.at(0), (Json{{"port", 0},
                                 {"name", "Gate"},
                                 {"behaviour", 3},
                                 {"on", true},
                                 {"high", true},
                                 {"rises", 1},
                                 {"falls", 0},
                                 {"requests", 1},
                                 {"done", 1},
                                 {"refused", 0},
                                 {"lost", 0},
                                 {"waiting", 0},
                                 {"lastState", true},
                                 {"lastTarget", 7},
                                 {"edges", Json::array({edge})}}));
    EXPECT_EQ(ports.at(3).at("port"), 3);
    EXPECT_EQ(ports.at(3).at("lastState"), nullptr);
    EXPECT_EQ(ports.at(3).at("lastTarget"), nullptr);
    EXPECT_EQ(ports.at(3).at("edges"), Json::array());
}

TEST_F(IoResourceTest, TheSchemaDescribesEachMember) {
    device->SetOutputState(0, true, 0);
    const Json document = Read("/sensor/io", true).ToJson();
    const auto require = [](const Json& shown, const Json& schema) {
        for (const auto& [name, value] : shown.items()) {
            if (name != "_schema") {
                EXPECT_TRUE(schema.at("properties").at(name).contains("title")) << name;
            }
        }
        EXPECT_EQ(schema.at("properties").size(), shown.size() - (shown.contains("_schema") ? 1 : 0));
    };
    const Json& schema = document.at("_schema");
    const Json& deviceSchema = schema.at("properties").at("devices").at("items");
    const Json& portSchema = deviceSchema.at("properties").at("ports").at("items");
    const Json& shown = document.at("devices").at(0);
    require(document, schema);
    require(shown, deviceSchema);
    require(shown.at("ports").at(0), portSchema);
    require(shown.at("ports").at(0).at("edges").at(0), portSchema.at("properties").at("edges").at("items"));
}

TEST_F(IoResourceTest, EdgesHaveTheFrameOfTheScan) {
    Set("schedule", "encoder");
    sensor.Core().Start(true, false);
    device->SetOutputState(0, true, 1000);
    device->SetOutputState(0, false, 9000);
    MakeFrames(3);
    Json port = Port(0);
    EXPECT_EQ(port.at("waiting"), 1);
    EXPECT_EQ(port.at("edges").at(0).at("frame"), 1);
    sensor.Core().Stop(false, false);
    port = Port(0);
    EXPECT_EQ(port.at("waiting"), 0);
    EXPECT_EQ(port.at("lost"), 1);
    EXPECT_EQ(port.at("requests"), 2);
}

TEST_F(IoResourceTest, AClientAsksForFewerEdges) {
    for (int i = 0; i < 300; ++i) {
        device->SetOutputState(0, i % 2 == 0, 0);
    }
    const auto edges = [&](VorApi::RequestInfoEx::Query query) {
        return ReadIo(std::move(query)).at("devices").at(0).at("ports").at(0).at("edges");
    };
    EXPECT_EQ(edges({}).size(), 256U);
    ASSERT_EQ(edges({{"edges", "2"}}).size(), 2U);
    EXPECT_EQ(edges({{"edges", "2"}}).at(1).at("number"), 300);
    EXPECT_EQ(edges({{"edges", "0"}}), Json::array());
    EXPECT_FAILURE(ReadIo({{"edges", "257"}}), yERROR_FORMAT,
                   "The query has edges=257, and a number from 0 to 256 was expected.");
    for (const char* wrong : {"", "-1", "x", "1.0"}) {
        EXPECT_EQ(StatusOf([&] { ReadIo({{"edges", wrong}}); }), yERROR_FORMAT) << wrong;
    }
}

TEST_F(IoResourceTest, ShowsOnlyDevicesThatArePluggedIn) {
    sensor.Devices().Unplug("io-0");
    EXPECT_EQ(ReadIo(), (Json{{"devices", Json::array()}}));
    sensor.Devices().Plug("io-0");
    EXPECT_EQ(Port(0).at("requests"), 0);
    sensor.Devices().Find("io-0")->ChangeSerialNumber("42");
    EXPECT_EQ(ReadIo().at("devices").at(0).at("serialNumber"), "42");
}

TEST_F(IoResourceTest, NeverWaitsForADevice) {
    device->SetCalls(Io::OutputDevice::Calls::Hang);
    Tests::Signal begun;
    auto call = std::async(std::launch::async, [&] {
        begun.Set();
        return device->SetOutputState(0, true, 0);
    });
    ASSERT_TRUE(begun.Wait());
    EXPECT_EQ(Port(0).at("requests"), 0);
    device->SetCalls(Io::OutputDevice::Calls::Work);
    EXPECT_EQ(call.get(), yOK);
    EXPECT_EQ(Port(0).at("requests"), 1);
}

TEST_F(IoResourceTest, AStreamHasTheNewestState) {
    const auto stream =
        streams
            ->Open({"/events", {{"topic", "io;rate=1;edges=1"}}}, {}, Http::Responder(std::make_shared<NoConnection>()))
            .stream;
    loop.Advance(std::chrono::seconds(1));
    EXPECT_EQ(DocumentsIn(stream).size(), 1U) << "what there is at first";
    loop.Advance(std::chrono::seconds(3));
    EXPECT_EQ(DocumentsIn(stream), Json::array()) << "nothing has changed";
    device->SetOutputState(0, true, 0);
    device->SetOutputState(0, false, 0);
    loop.Advance(std::chrono::seconds(1));
    device->SetOutputState(0, true, 0);
    loop.Advance(std::chrono::seconds(1));
    const Json documents = DocumentsIn(stream);
    ASSERT_EQ(documents.size(), 1U) << "only the newest one waits";
    const Json& edges = documents.at(0).at("devices").at(0).at("ports").at(0).at("edges");
    ASSERT_EQ(edges.size(), 1U);
    EXPECT_EQ(edges.at(0).at("number"), 3);
}

TEST_F(IoResourceTest, TheLimitOfStreamsIsReported) {
    std::vector<std::shared_ptr<Http::IBodyStream>> open;
    Http::HttpRequest local;
    local.peerIsLoopback = true;
    const auto add = [&](std::size_t edges) {
        open.push_back(streams
                           ->Open({"/events", {{"topic", "io;edges=" + std::to_string(edges)}}}, local,
                                  Http::Responder(std::make_shared<NoConnection>()))
                           .stream);
    };
    for (std::size_t i = 0; i < 16; ++i) {
        add(i);
    }
    EXPECT_FAILURE(
        add(16), yERROR_BUSY,
        "There are 16 streams of the digital outputs with other rates or edges already, which is the limit.");
}

// As many devices, ports and edges as there can be.
TEST(IoDocument, IsOfLimitedSize) {
    const Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    const Io::OutputDevices devices("virtual", {.count = Io::OutputDevices::MaxCount});
    for (const Io::OutputDevices::Plugged& plugged : devices.Devices()) {
        plugged.device->Enable(true);
        for (const unsigned long long port : plugged.device->Ports()) {
            for (int i = 0; i < 300; ++i) {
                plugged.device->SetOutputState(port, i % 2 == 0, std::numeric_limits<long long>::min());
            }
        }
    }
    EXPECT_LT(IoDocument(devices, Io::OutputPort::MaxEdges).dump().size(), 1U << 20);
}

} // namespace
} // namespace Sensor::Resources
