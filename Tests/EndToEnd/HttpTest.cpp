#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/TcpClient.h"

#include <optional>

namespace Tests {
namespace {

using Json = nlohmann::json;

/// A sensor that stops after its one frame, so that its values stay as they are.
class HttpTest : public testing::Test {
protected:
    HttpTest() {
        sensor.Process().WaitForLine("Service modbus (Modbus TCP): Running");
        http.emplace(HttpClient::Of(sensor));
        sensor.WaitForLastFrame();
    }

    /// From the entry to the service, by links.
    std::string ServicePath(const std::string& id) const {
        const HttpAnswer services = http->Get(http->Get("/").Link("vor:controls"));
        for (const std::string& path : services.Embedded("item")) {
            if (http->Get(path).body.at("id") == id) {
                return path;
            }
        }
        ADD_FAILURE() << "there is no service " << id;
        return "";
    }
    /// The command of that name, by the links of the document.
    std::string CommandPath(const std::string& document, const std::string& id) const {
        for (const std::string& path : http->Get(document).Links("vor:command")) {
            if (http->Get(path).body.at("id") == id) {
                return path;
            }
        }
        ADD_FAILURE() << "there is no command " << id << " of " << document;
        return "";
    }
    /// The port of the Modbus service as its document has it.
    std::uint16_t Port(const std::string& service) const {
        const std::string address = http->Get(service).body.at("address");
        return static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1)));
    }

    VirtualSensor sensor{{"--once", "--frame-rate", "1000"}};
    std::optional<HttpClient> http;
};

TEST_F(HttpTest, AMapIsEditedByLinksAloneAndReadByAModbusClient) {
    const std::string service = ServicePath("modbus");
    const std::string assembly = http->Get(service).Embedded("vor:registerAssembly").at(0);
    const Json block = {{"type", "Measurement"}, {"dataSource", "profile/max"}, {"outputId", 80}};
    EXPECT_EQ(http->Ask("POST", CommandPath(assembly, "add"), {{"blocks", Json::array({block})}}).status, 200);
    EXPECT_EQ(http->Ask("POST", CommandPath(assembly, "compact"), {{"startingOutputId", 0}}).status, 200);

    const Json blocks = http->Get(assembly).body.at("blocks");
    ASSERT_EQ(blocks.size(), 13U);
    EXPECT_EQ(blocks[5]["outputId"], 15) << "the stamp is behind five measurements";
    EXPECT_EQ(blocks[7]["dataSource"], "profile/max");
    const int place = blocks[7]["outputId"];
    ModbusReader reader(Port(service));
    const auto registers = reader.Read(0, place + 3);
    ASSERT_EQ(registers.size(), static_cast<std::size_t>(place) + 3);
    EXPECT_NE(Signed32(registers, 0), 0);
    EXPECT_EQ(Signed32(registers, static_cast<std::size_t>(place)), Signed32(registers, 0));
}

TEST_F(HttpTest, AServiceIsChangedAndDisabledAndEnabled) {
    const std::string service = ServicePath("modbus");
    const HttpAnswer changed = http->Ask("PATCH", service, {{"parameters", {{"idleTimeout", 77}}}});
    EXPECT_EQ(changed.status, 200);
    EXPECT_EQ(changed.body.at("parameters").at("idleTimeout"), 77);
    EXPECT_EQ(http->Get(service).body.at("parameters").at("idleTimeout"), 77);

    const std::uint16_t port = Port(service);
    const HttpAnswer stopped = http->Ask("PATCH", service, {{"enabled", false}});
    EXPECT_EQ(stopped.body.at("enabled"), false);
    EXPECT_FALSE(TcpClient(port).Connected());
    const HttpAnswer sensors = http->Get(http->Get("/").Link("vor:sensor"));
    const Json& services = sensors.body.at("services");
    EXPECT_EQ(services.at(1).at("status"), "Stopped") << services;
    EXPECT_EQ(services.at(1).at("path"), service);
    EXPECT_EQ(sensors.body.at("jobModified"), true);

    EXPECT_EQ(http->Ask("PATCH", service, {{"enabled", true}}).status, 200);
    EXPECT_TRUE(TcpClient(Port(service)).Connected());
}

TEST_F(HttpTest, AnEditOfAStaleStateIsRefused) {
    const std::string service = ServicePath("modbus");
    const std::string tag = http->Get(service).Field("etag");
    EXPECT_NE(tag, "");
    const std::vector<std::string> ifSame{"If-Match: " + tag};
    const Json one = {{"parameters", {{"idleTimeout", 71}}}};
    const Json other = {{"parameters", {{"idleTimeout", 72}}}};
    const HttpAnswer first = http->Ask("PATCH", service, one, ifSame);
    EXPECT_EQ(first.status, 200);
    EXPECT_NE(first.Field("etag"), tag);
    const HttpAnswer second = http->Ask("PATCH", service, other, ifSame);
    EXPECT_EQ(second.status, 412);
    EXPECT_EQ(second.Field("content-type"), "application/problem+json");
    EXPECT_EQ(http->Get(service).body.at("parameters").at("idleTimeout"), 71);
    EXPECT_EQ(http->Ask("PATCH", service, other, {"If-Match: " + first.Field("etag")}).status, 200);
}

TEST_F(HttpTest, AListenerHearsOfAChange) {
    const std::string service = ServicePath("modbus");
    Program events = http->Stream(http->Get("/").Link("vor:events") + "?topic=notice&topic=state");
    ASSERT_TRUE(events.WaitForLine("event: hello")) << events.Errors();
    const Json hello = Json::parse(events.WaitForLine("data: ").value_or("data: null").substr(6));
    EXPECT_EQ(hello.at("boot"), http->Get("/").body.at("boot"));
    ASSERT_TRUE(events.WaitForLine("event: beat"));
    const HttpAnswer changed = http->Ask("PATCH", service, {{"parameters", {{"idleTimeout", 73}}}});
    ASSERT_TRUE(events.WaitForLine("event: notice"));
    EXPECT_TRUE(events.WaitForLine("id: " + hello.at("boot").get<std::string>() + ":"));
    const Json notice = Json::parse(events.WaitForLine("data: ").value_or("data: null").substr(6));
    EXPECT_EQ(notice.at("code"), "changed");
    EXPECT_EQ(notice.at("path"), service);
    EXPECT_EQ('"' + notice.at("revision").get<std::string>() + '"', changed.Field("etag"));

    const std::string stream = hello.at("_links").at("self").at("href");
    const HttpAnswer topics =
        http->Ask("PATCH", stream, {{"add", {"metrics:modbus"}}, {"remove", {"notice", "state"}}});
    EXPECT_EQ(topics.status, 200);
    EXPECT_EQ(topics.body.at("topics"), Json::array({"metrics:modbus"}));
    EXPECT_TRUE(events.WaitForLine("event: metrics:modbus"));
}

TEST_F(HttpTest, FiguresOfAServiceAreAStream) {
    const std::string service = ServicePath("modbus");
    Program figures = http->Stream(http->Get(service).Link("vor:metrics"));
    const std::string data = figures.WaitForLine("data: ").value_or("data: null").substr(6);
    const Json received = Json::parse(data);
    for (const char* const figure : {"dropCount", "connected", "requests", "bytesIn", "bytesOut", "resultsApplied"}) {
        EXPECT_TRUE(received.contains(figure)) << figure << " isn't in " << data;
    }
}

TEST_F(HttpTest, AnUnknownTopicIsRefusedWithTheTopics) {
    const HttpAnswer refused = http->Ask("GET", "/events?topic=weather", nullptr, {"Accept: text/event-stream"});
    EXPECT_EQ(refused.status, 422);
    EXPECT_NE(refused.body.at("detail").get<std::string>().find("metrics:modbus"), std::string::npos) << refused.body;
}

TEST(Http, APortThatIsTakenIsRefusedIfItWasGiven) {
    VirtualSensor first;
    const std::string line =
        first.Process().WaitForLine("HTTP: http://127.0.0.1:").value_or("HTTP: http://127.0.0.1:0/");
    const std::string port = line.substr(23, line.size() - 24);
    const TempFolder data;
    const Answer second = RunToEnd(VirtualSensor::Command(
        data.Path().string(), {"--http-port", port, "--modbus-port", "0", "--set", "ascii.port=0"}));
    EXPECT_EQ(second.status, 2);
    EXPECT_EQ(second.errors, "vorsensor: --http-port " + port + ": port " + port + " on 127.0.0.1 is in use.\n");
}

TEST(Http, IsOffIfTheUserWantsThat) {
    VirtualSensor sensor({"--no-http"});
    EXPECT_TRUE(sensor.Process().WaitForLine("Scanning."));
    EXPECT_EQ(sensor.Process().Output().find("HTTP"), std::string::npos);
    ExpectEndWell(sensor.Process());
}

} // namespace
} // namespace Tests
