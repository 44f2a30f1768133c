#include "Sensor/ResourceServer.h"

#include "Net/NetThread.h"
#include "Sensor/LogHistory.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/StartError.h"
#include "Sensor/VirtualSensor.h"
#include "Tests/Net/LineClient.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"

#include <chrono>
#include <cstdint>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

class ResourceServerTest : public ::testing::Test {
protected:
    ResourceServerTest() {
        settings.port = 0;
        host.CreateServices();
    }

    /// Occupies a port, which a sensor then wants.
    void OccupyPort() {
        taken.emplace(thread, counters, Net::TcpServerSettings{}, [](bool) { return nullptr; });
        settings.port = taken->Port();
    }
    void Advance() { loop.Advance(ResourceServer::RetryPeriod); }
    std::string Url() const { return "HTTP: http://127.0.0.1:" + std::to_string(settings.port) + "/"; }

    Vor::LogCapture log;
    Tests::TempFolder folder;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    const Scan::Recording recording = Scan::GeneratePart();
    VirtualSensor sensor{recording, {}};
    ServiceHost host{{.dataFolder = folder.Path(), .job = "test"}, sensor};
    const LogHistory logHistory;
    Net::NetThread thread{"Other"};
    Net::TcpCounters counters;
    std::optional<Net::TcpServer> taken;
    CommandLine::Http settings;
    std::vector<std::string> lines;
    std::optional<ResourceServer> server;
};

TEST_F(ResourceServerTest, SaysWhereItListens) {
    server.emplace(settings, host, sensor, logHistory, [this](const std::string& line) { lines.push_back(line); });
    EXPECT_TRUE(lines.empty());
    server->Start();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].find("HTTP: http://127.0.0.1:"), 0U) << lines[0];
    EXPECT_TRUE(lines[0].ends_with("/")) << lines[0];
}

TEST_F(ResourceServerTest, AnswersByTheFurtherNamesOfTheHost) {
    settings.hosts = {"sensor.example"};
    server.emplace(settings, host, sensor, logHistory, [this](const std::string& line) { lines.push_back(line); });
    server->Start();
    ASSERT_EQ(lines.size(), 1U);
    const auto port = static_cast<std::uint16_t>(std::stoul(lines[0].substr(lines[0].rfind(':') + 1)));
    const auto statusFor = [&](const std::string& name) {
        bool isAnswered = false;
        auto answer = std::async(std::launch::async, [&] {
            Net::LineClient client(port);
            client.Send("GET /healthz HTTP/1.1\r\nHost: " + name + "\r\nConnection: close\r\n\r\n");
            const std::string text = client.Rest();
            loop.Post([&] { isAnswered = true; });
            return text.substr(0, text.find("\r\n"));
        });
        while (!isAnswered && loop.WaitReady()) {
            loop.RunReady();
        }
        return answer.get();
    };
    EXPECT_EQ(statusFor("sensor.example"), "HTTP/1.1 200 OK");
    EXPECT_EQ(statusFor("other.example"), "HTTP/1.1 421 Misdirected Request");
}

TEST_F(ResourceServerTest, ADefaultPortThatIsTakenIsTriedAgain) {
    OccupyPort();
    server.emplace(settings, host, sensor, logHistory, [this](const std::string& line) { lines.push_back(line); });
    server->Start();
    Advance();
    EXPECT_TRUE(lines.empty());
    EXPECT_EQ(log.Count(Vor::UserWarning, "HTTP isn't served yet: port " + std::to_string(settings.port) +
                                              " on 127.0.0.1 is in use. The sensor tries again every 5 seconds."),
              1U);
    taken.reset();
    Advance();
    EXPECT_EQ(lines, std::vector<std::string>{Url()});
    Advance();
    EXPECT_EQ(lines.size(), 1U);
}

TEST_F(ResourceServerTest, APortOfTheUserThatIsTakenIsRefused) {
    OccupyPort();
    settings.portGiven = true;
    server.emplace(settings, host, sensor, logHistory, [this](const std::string& line) { lines.push_back(line); });
    try {
        server->Start();
        FAIL();
    } catch (const StartError& error) {
        const std::string port = std::to_string(settings.port);
        EXPECT_EQ(error.what(), "--http-port " + port + ": port " + port + " on 127.0.0.1 is in use.");
    }
}

TEST_F(ResourceServerTest, NothingOfItIsLeftAtItsEnd) {
    server.emplace(settings, host, sensor, logHistory, [this](const std::string& line) { lines.push_back(line); });
    server->Start();
    server.reset();
    EXPECT_FALSE(host.Router().Find("/sensor"));
    EXPECT_FALSE(host.Router().Find("/events"));
    EXPECT_TRUE(host.Router().Find("/controls"));
    EXPECT_EQ(loop.RunReady(), 0U);
    server.emplace(settings, host, sensor, logHistory, [](const std::string&) {});
}

} // namespace
} // namespace Sensor
