#include "Sensor/StartRetry.h"

#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/VirtualScanEngine.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/VirtualSensor.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/LogLines.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveStore.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorScan/Internal/ScanEngineInstance.h"
#include "VorScan/Internal/ScannerInstance.h"
#include "yApi/yStatus.h"

#include <arpa/inet.h>
#include <chrono>
#include <iostream>
#include <netinet/in.h>
#include <optional>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

/// A port of 127.0.0.1 that somebody listens on.
class TakenPort {
public:
    TakenPort()
        : fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(fd, 1), 0);
        EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
        number = ntohs(address.sin_port);
    }
    ~TakenPort() { close(fd); }
    TakenPort(const TakenPort&) = delete;
    TakenPort& operator=(const TakenPort&) = delete;

    std::uint16_t Number() const { return number; }

private:
    const int fd;
    std::uint16_t number = 0;
};

class StartRetryTest : public ::testing::Test {
protected:
    /// The texts of the user's log.
    std::vector<std::string> UserTexts() const {
        std::vector<std::string> texts;
        for (const Vor::LogRecord& record : log.Records()) {
            if ((record.level & Vor::LevelUserFlag) != 0) {
                texts.push_back(record.text);
            }
        }
        return texts;
    }

    VorControl::IControlInstance& Service(const std::string& id) { return host.Services().GetInstance(id); }

    Tests::TempFolder folder;
    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::weak_ptr<Tests::TestService> service;
    const Scan::Recording recording = Scan::GeneratePart();
    VirtualSensor sensor{recording, {.scan = {.trigger = Scan::TriggerMode::Software}}};
    ServiceHost host{{.dataFolder = folder.Path(), .job = "test"}, sensor};
    const UserLog userLog{UserLog::Settings{}};
    std::vector<std::string> started;
    StartRetry retry{userLog, [this](VorControl::IControlInstance& instance) { started.push_back(instance.Id()); }};
};

TEST_F(StartRetryTest, TriesEachPeriodUntilTheServiceRunsAndTellsTheUserTwice) {
    Tests::TestPlugin().Add("a", service).Publish(host.Plugins());
    host.CreateServices();
    service.lock()->onStart = [attempts = 0]() mutable {
        Vor::LogError("attempt %d has failed", ++attempts);
        Vor::Throw(yERROR_CONFLICT, "the port is taken");
    };
    Service("a").Enable(true);
    service.lock()->calls.clear();
    std::ostringstream errors;
    std::streambuf* const former = std::cerr.rdbuf(errors.rdbuf());
    retry.Watch(host.Services());
    retry.Watch(host.Services());
    loop.Advance(StartRetry::Period - std::chrono::microseconds(1));
    EXPECT_TRUE(service.lock()->calls.empty());
    loop.Advance(std::chrono::microseconds(1));
    EXPECT_EQ(service.lock()->calls,
              (std::vector<std::string>{"AddControlScanResultsHandler", "Start", "RemoveControlScanResultsHandler"}));
    loop.Advance(2 * StartRetry::Period);
    EXPECT_EQ(service.lock()->calls.size(), 9U);
    EXPECT_EQ(log.Count("Starting service a again."), 3U);
    EXPECT_TRUE(started.empty());

    service.lock()->onStart = {};
    loop.Advance(StartRetry::Period);
    EXPECT_EQ(started, std::vector<std::string>{"a"});
    EXPECT_EQ(service.lock()->calls.size(), 11U);
    loop.Advance(4 * StartRetry::Period);
    std::cerr.rdbuf(former);
    EXPECT_EQ(service.lock()->calls.size(), 11U);
    EXPECT_EQ(UserTexts(), (std::vector<std::string>{
                               "a service can't start: the port is taken. The sensor tries again every 5 seconds.",
                               "a service has started."}));
    EXPECT_EQ(Tests::WithoutTimes(errors.str()),
              "warning: a service can't start: the port is taken. The sensor tries again every 5 seconds.\n"
              "info: a service has started.\n");
}

TEST_F(StartRetryTest, TriesServicesThatAreStartedLater) {
    Tests::TestPlugin().Add("a", service).Publish(host.Plugins());
    host.CreateServices();
    Service("a").Enable(true);
    retry.Watch(host.Services());
    Service("a").Enable(false);
    service.lock()->onStart = [] { Vor::Throw(yERROR_CONFLICT, "the port is taken"); };
    Service("a").Enable(true);
    EXPECT_EQ(UserTexts(), std::vector<std::string>{
                               "a service can't start: the port is taken. The sensor tries again every 5 seconds."});
    service.lock()->onStart = {};
    loop.Advance(StartRetry::Period);
    EXPECT_EQ(started, std::vector<std::string>{"a"});
    EXPECT_EQ(UserTexts().back(), "a service has started.");
}

TEST_F(StartRetryTest, LeavesOtherFailuresAndDisabledServicesAlone) {
    Tests::TestPlugin().Add("a", service).Publish(host.Plugins());
    host.CreateServices();
    service.lock()->onStart = [] { Vor::Throw(yERROR_PARAMETER, "no address"); };
    Service("a").Enable(true);
    const auto runsWithoutRetry = loop.Advance(2 * StartRetry::Period);
    retry.Watch(host.Services());
    EXPECT_EQ(loop.Advance(2 * StartRetry::Period), runsWithoutRetry);
    EXPECT_TRUE(UserTexts().empty());

    service.lock()->onStart = [] { Vor::Throw(yERROR_CONFLICT, "taken"); };
    Service("a").Enable(true);
    retry.Watch(host.Services());
    Service("a").Enable(false);
    service.lock()->calls.clear();
    loop.Advance(2 * StartRetry::Period);
    EXPECT_TRUE(service.lock()->calls.empty());
    EXPECT_EQ(loop.Advance(2 * StartRetry::Period), runsWithoutRetry);

    Service("a").Enable(true);
    retry.Watch(host.Services());
    service.lock()->onStart = [] { Vor::Throw(yERROR, "the cable is cut"); };
    loop.Advance(StartRetry::Period);
    EXPECT_EQ(UserTexts().back(), "a service can't start: the cable is cut.");
    EXPECT_EQ(loop.Advance(2 * StartRetry::Period), runsWithoutRetry);
}

TEST_F(StartRetryTest, AClientReadsThePresentFrameOnceThePortIsFree) {
    constexpr int Stamp = 16;
    constexpr int FrameOffset = 12;
    host.LoadPlugins(Tests::BuiltFile("plugins"));
    host.CreateServices();
    std::optional<TakenPort> taken(std::in_place);
    const std::uint16_t port = taken->Number();
    const std::string config =
        R"({"version":"1","vor:control":{"enabled":true,"parameters":{"port":)" + std::to_string(port) +
        R"(},"parametersVersion":"1","registerAssemblyList":[{"properties":{"id":"registerAssembly-0"},"blocks":[)"
        R"({"type":"Stamp","dataSource":"profile/stamp","outputId":)" +
        std::to_string(Stamp) + R"(}]}],"registerAssemblyVersionList":[{"id":"registerAssembly-0","version":"1"}]}})";
    VorCommon::ArchiveStore job(folder.File("jobs/test.vrjob"));
    job.Write("/controls/modbus/config.json", config.data(), config.size());
    job.Commit();
    host.LoadDomains();
    retry.Watch(host.Services());
    sensor.Core().Start(true, false);
    const auto trigger = [this] {
        sensor.ScanEngines()
            .GetInstance(Scan::VirtualScanEngine::Id)
            .FindScanner(Scan::VirtualScanEngine::ScannerId)
            .Scanner()
            .ActionTarget()
            ->ExecuteAction("trigger", nullptr);
    };
    trigger();
    loop.Advance(StartRetry::Period);
    EXPECT_TRUE(started.empty());

    taken.reset();
    loop.Advance(StartRetry::Period);
    ASSERT_EQ(started, std::vector<std::string>{"modbus"});
    EXPECT_EQ(UserTexts().back(), "Modbus TCP has started.");
    trigger();
    Tests::ModbusReader client(port);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    std::uint64_t frame = 0;
    while (frame == 0 && std::chrono::steady_clock::now() < deadline) {
        frame = Tests::Unsigned64(client.Read(Stamp + FrameOffset, 4), 0);
    }
    EXPECT_EQ(frame, 1U);
}

} // namespace
} // namespace Sensor
