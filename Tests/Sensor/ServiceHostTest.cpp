#include "Sensor/ServiceHost.h"

#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/VirtualSensor.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/TestService.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveStore.h"
#include "VorControl/Control/IControlInstance.h"

#include <algorithm>
#include <stdexcept>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

class ServiceHostTest : public ::testing::Test {
protected:
    ServiceHostTest()
        : host({.dataFolder = folder.Path(), .job = "test"}, sensor) {
        host.JobLoadedEvent().Add([this](const std::string& fileName) { loaded = fileName; });
    }

    /// A job in which the service "a" is enabled.
    void MakeJob(const std::string& name) const {
        const std::string config = R"({"version":"1","vor:control":{"enabled":true}})";
        VorCommon::ArchiveStore job(folder.File("jobs/" + name + ".vrjob"));
        job.Write("/controls/a/config.json", config.data(), config.size());
        job.Commit();
    }

    std::string ErrorOfUserLog() const {
        for (const Vor::LogRecord& record : log.Records()) {
            if (record.level == Vor::UserError) {
                return record.text;
            }
        }
        return "";
    }

    Tests::TempFolder folder;
    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::weak_ptr<Tests::TestService> service;
    std::weak_ptr<Tests::TestService> other;
    std::string loaded;
    VorControl::IControlHost* controlHost = nullptr;
    const Scan::Recording recording = Scan::GeneratePart();
    VirtualSensor sensor{recording, {.scan = {.trigger = Scan::TriggerMode::Software}}};
    ServiceHost host;
};

TEST_F(ServiceHostTest, IsAVirtualSensorOnly) {
    VorControl::ControlInfo::SupportedEnvironmentList nowhereElse{false, false, true, false, false, false};
    VorControl::ControlInfo::SupportedEnvironmentList elsewhere{true, true, false, true, true, true};
    VorControl::ControlInfo here = Tests::TestPlugin::Info("here");
    here.SetSupportedEnvironment(nowhereElse);
    VorControl::ControlInfo there = Tests::TestPlugin::Info("there");
    there.SetSupportedEnvironment(elsewhere);
    const auto make = [](const auto& environ) { return std::make_shared<Tests::TestService>(environ); };
    Tests::TestPlugin().Add(here, make).Add(there, make).Publish(host.Plugins());
    host.CreateServices();
    EXPECT_EQ(host.Services().List(), std::vector<std::string>{"here"});
}

TEST_F(ServiceHostTest, WithoutPluginsThereAreNoServices) {
    host.CreateServices();
    EXPECT_TRUE(host.Services().List().empty());
}

TEST_F(ServiceHostTest, AFactoryThatThrowsLeavesItsLibraryOut) {
    Tests::TestPlugin()
        .Add("a", service)
        .Add(Tests::TestPlugin::Info("b"),
             [](const auto&) -> std::shared_ptr<Tests::TestService> { throw std::runtime_error("no licence"); })
        .Publish(host.Plugins());
    Tests::TestPlugin().Add("c", other).Publish(host.Plugins());
    host.CreateServices();
    EXPECT_EQ(host.Services().List(), std::vector<std::string>{"c"});
    EXPECT_EQ(ErrorOfUserLog(), " is left out: its service b can't be created (no licence).");
}

TEST_F(ServiceHostTest, AFactoryThatGivesNothingLeavesItsLibraryOut) {
    Tests::TestPlugin().Add("c", other).Publish(host.Plugins());
    Tests::TestPlugin()
        .Add(Tests::TestPlugin::Info("b"), [](const auto&) -> std::shared_ptr<Tests::TestService> { return nullptr; })
        .Publish(host.Plugins());
    host.CreateServices();
    EXPECT_EQ(host.Services().List(), std::vector<std::string>{"c"});
    EXPECT_NE(ErrorOfUserLog().find("service b"), std::string::npos);
}

TEST_F(ServiceHostTest, TellsEnabledServicesOfTheScan) {
    Tests::TestPlugin().Add("a", service).Add("b", other).Publish(host.Plugins());
    host.CreateServices();
    host.Services().GetInstance("a").Enable(true);
    service.lock()->calls.clear();
    sensor.Core().Start(true, false);
    sensor.Core().Stop(false, false);
    EXPECT_EQ(service.lock()->calls, (std::vector<std::string>{"scan started", "scan stopped"}));
    EXPECT_TRUE(other.lock()->calls.empty());
}

TEST_F(ServiceHostTest, AServiceThatFailsAtTheScanDoesntKeepTheSensorFromIt) {
    Tests::TestPlugin().Add("a", service).Publish(host.Plugins());
    host.CreateServices();
    host.Services().GetInstance("a").Enable(true);
    service.lock()->onScanState = [] { Vor::Throw(yERROR); };
    EXPECT_NO_THROW(sensor.Core().Start(true, false));
    EXPECT_EQ(sensor.Core().GetRunState(), 1);
    EXPECT_NO_THROW(sensor.Core().Stop(false, false));
    EXPECT_EQ(sensor.Core().GetRunState(), 0);
}

TEST_F(ServiceHostTest, TellsEveryServiceOfAFactoryRestore) {
    Tests::TestPlugin().Add("a", service).Add("b", other).Publish(host.Plugins());
    host.CreateServices();
    service.lock()->calls.clear();
    other.lock()->calls.clear();
    service.lock()->onFactoryRestore = [] { throw std::runtime_error("no"); };
    EXPECT_NO_THROW(sensor.Core().FactoryRestore());
    EXPECT_EQ(service.lock()->calls, std::vector<std::string>{"OnFactoryRestore"});
}

TEST_F(ServiceHostTest, AServicesHostReachesTheSensorAndItsJobs) {
    MakeJob("second");
    VorControl::IControlSystemInterface::ControlDataSourceProperties source;
    Tests::TestPlugin()
        .Add(Tests::TestPlugin::Info("a"),
             [&](const VorControl::ControlProtocol::ControlProtocolEnviron& environ) {
                 controlHost = environ.controlHost;
                 return std::make_shared<Tests::TestService>(environ);
             })
        .Publish(host.Plugins());
    host.CreateServices();
    host.LoadDomains();
    ASSERT_NE(controlHost, nullptr);

    sensor.Core().Start(true, false);
    controlHost->LoadJob("a", "second");
    loop.RunReady();
    EXPECT_EQ(loaded, "second.vrjob");
    EXPECT_TRUE(host.Services().GetInstance("a").IsEnabled());
    EXPECT_EQ(controlHost->SystemStats(0).loadedJob, "second.vrjob");
    EXPECT_EQ(controlHost->SystemStats(0).runState, 1);
    controlHost->DataSourceProperties("profile/max", source, 0);
    EXPECT_EQ(source.displayName, "Profile / Maximum Height");
    EXPECT_EQ(controlHost->ScannerInfo("", 0).id, "scanner-0");
}

TEST_F(ServiceHostTest, StopsWhatIsEnabled) {
    Tests::TestPlugin().Add("a", service).Add("b", other).Publish(host.Plugins());
    host.CreateServices();
    host.Services().GetInstance("a").Enable(true);
    service.lock()->calls.clear();
    host.StopServices();
    EXPECT_EQ(service.lock()->calls, (std::vector<std::string>{"Stop", "RemoveControlScanResultsHandler"}));
    EXPECT_TRUE(other.lock()->calls.empty());
    host.StopServices();
    EXPECT_EQ(service.lock()->calls.size(), 2U);
}

TEST_F(ServiceHostTest, AServiceThatFailsToStopDoesntKeepTheOthers) {
    Tests::TestPlugin().Add("a", service).Add("b", other).Publish(host.Plugins());
    host.CreateServices();
    host.Services().GetInstance("a").Enable(true);
    host.Services().GetInstance("b").Enable(true);
    service.lock()->onStop = [] { throw 1; };
    host.StopServices();
    EXPECT_EQ(other.lock()->calls.at(2), "Stop");
    service.lock()->onStop = {};
}

TEST_F(ServiceHostTest, AStartThatThrowsNoExceptionIsSurvived) {
    MakeJob("test");
    bool started = false;
    Tests::TestPlugin()
        .Add("a", service,
             [&](Tests::TestService& made) {
                 made.onStart = [&] {
                     started = true;
                     throw 1;
                 };
             })
        .Publish(host.Plugins());
    host.CreateServices();
    EXPECT_NO_THROW(host.LoadDomains());
    EXPECT_TRUE(started);
    EXPECT_EQ(host.Persistence().LoadedJob(), "test.vrjob");
    EXPECT_TRUE(host.Services().GetInstance("a").IsEnabled());
    EXPECT_TRUE(log.Contains(Vor::LevelWarning, "Protocol (a) failed to start (unknown exception)."));
}

} // namespace
} // namespace Sensor
