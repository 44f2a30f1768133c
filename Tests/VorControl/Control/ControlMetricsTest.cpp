#include "VorControl/Control/ControlMetrics.h"

#include "Tests/Support/ControlEnviron.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/FakeDeviceManager.h"
#include "Tests/Support/MetricsService.h"
#include "Tests/Support/RecordingScanResults.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorControl/Control/ControlManager.h"
#include "VorControl/Control/ControlRegistry.h"
#include "VorControl/Control/IControlInstance.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using VorCommon::IMetricsSource;
using VorControl::ControlMetrics;
using VorControl::ControlMetricsKey;

namespace {

constexpr const char* Started = "Control metrics reporting started.";
constexpr const char* Stopped = "Control metrics reporting stopped.";

/// Figures of the services "a" and "b", which are enabled.
class ControlMetricsTest : public testing::Test {
protected:
    ControlMetricsTest() {
        Tests::TestPlugin()
            .Add(Tests::TestPlugin::Info("a"), Make(a))
            .Add(Tests::TestPlugin::Info("b"), Make(b))
            .Publish(plugins);
        registry = std::make_unique<VorControl::ControlRegistry>(plugins);
        manager = std::make_unique<VorControl::ControlManager>(*registry, scanResults, environ.Record());
        manager->GetInstance("a").Enable(true);
        manager->GetInstance("b").Enable(true);
        metrics = std::make_unique<ControlMetrics>(*manager);
    }

    static Tests::TestFactory::Function Make(Tests::MetricsService*& made) {
        return [&made](const VorControl::ControlProtocol::ControlProtocolEnviron& ofService) {
            auto service = std::make_shared<Tests::MetricsService>(ofService);
            made = service.get();
            return service;
        };
    }

    std::function<void(const IMetricsSource&)> Record(const std::string& name) {
        return [this, name](const IMetricsSource& source) {
            const auto& figures = dynamic_cast<const Tests::Figures&>(source.GetMetrics());
            reports.push_back(name + " " + std::to_string(figures.dropCount.Get()));
        };
    }

    /// Four refreshes end before each report, and none at the same moment.
    void RefreshBeforeReports() { metrics->ChangeUpdateInterval(240000); }

    std::vector<std::string> NewReports() { return std::exchange(reports, {}); }

    using Reports = std::vector<std::string>;

    Vor::LogCapture log;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    Tests::ControlEnviron environ;
    Tests::RecordingScanResults scanResults;
    VorPlugin::PluginManager plugins;
    Tests::MetricsService* a = nullptr;
    Tests::MetricsService* b = nullptr;
    std::unique_ptr<VorControl::ControlRegistry> registry;
    std::unique_ptr<VorControl::ControlManager> manager;
    std::unique_ptr<ControlMetrics> metrics;
    Reports reports;
    const ControlMetricsKey keyA{"a"};
    const ControlMetricsKey keyB{"b"};
};

TEST(ControlMetricsKeyTest, ComparesProtocolThenDeviceThenPort) {
    const ControlMetricsKey key("p", "d", "q");
    EXPECT_EQ(key.ProtocolName(), "p");
    EXPECT_EQ(key.DeviceId(), "d");
    EXPECT_EQ(key.PortId(), "q");
    EXPECT_EQ(key, ControlMetricsKey("p", "d", "q"));
    EXPECT_NE(key, ControlMetricsKey("p", "d"));
    EXPECT_LT(ControlMetricsKey("a", "z", "z"), ControlMetricsKey("b", "a", "a"));
    EXPECT_LT(ControlMetricsKey("a", "a", "z"), ControlMetricsKey("a", "b", "a"));
    EXPECT_LT(ControlMetricsKey("a", "a", "a"), ControlMetricsKey("a", "a", "b"));
}

TEST_F(ControlMetricsTest, RefreshesEnabledServicesFourTimesASecondWhetherSomebodyListensOrNot) {
    manager->GetInstance("b").Enable(false);
    loop.Advance(249999us);
    EXPECT_EQ(a->figures.dropCount.Get(), 0);
    loop.Advance(1us);
    EXPECT_EQ(a->figures.dropCount.Get(), 1);
    loop.Advance(1s);
    EXPECT_EQ(a->figures.dropCount.Get(), 5);
    EXPECT_EQ(b->figures.dropCount.Get(), 0);
    EXPECT_FALSE(log.Contains(Started));
}

TEST_F(ControlMetricsTest, AServiceThatFailsKeepsNoOtherFromBeingRefreshed) {
    a->onUpdate = [] { throw std::runtime_error("no figures"); };
    loop.Advance(500ms);
    EXPECT_EQ(a->figures.dropCount.Get(), 0);
    EXPECT_EQ(b->figures.dropCount.Get(), 2);
}

TEST_F(ControlMetricsTest, ReportsEachSecondInKeyOrderAndInOrderOfAdding) {
    RefreshBeforeReports();
    metrics->AddReportHandler(Record("b1"), keyB);
    metrics->AddReportHandler(Record("a1"), keyA);
    metrics->AddReportHandler(Record("a2"), keyA);
    EXPECT_EQ(log.Count(Vor::LevelDebug, Started), 1U);
    loop.Advance(999ms);
    EXPECT_TRUE(reports.empty());
    loop.Advance(1ms);
    EXPECT_EQ(NewReports(), (Reports{"a1 4", "a2 4", "b1 4"}));
    loop.Advance(1s);
    EXPECT_EQ(NewReports(), (Reports{"a1 8", "a2 8", "b1 8"}));
}

TEST_F(ControlMetricsTest, RemovingTheLastHandlerOfOneKeyKeepsTheReportsOfAnother) {
    RefreshBeforeReports();
    const auto idA = metrics->AddReportHandler(Record("a"), keyA);
    const auto idB = metrics->AddReportHandler(Record("b"), keyB);
    metrics->RemoveReportHandler(idA, keyA);
    EXPECT_FALSE(log.Contains(Stopped));
    loop.Advance(1s);
    EXPECT_EQ(NewReports(), (Reports{"b 4"}));
    metrics->RemoveReportHandler(idB, keyB);
    EXPECT_EQ(log.Count(Vor::LevelDebug, Stopped), 1U);
    loop.Advance(2s);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ControlMetricsTest, ADisabledServiceIsReportedWithItsLastFigures) {
    RefreshBeforeReports();
    metrics->AddReportHandler(Record("a"), keyA);
    loop.Advance(1s);
    manager->GetInstance("a").Enable(false);
    loop.Advance(1s);
    EXPECT_EQ(NewReports(), (Reports{"a 4", "a 4"}));
}

TEST_F(ControlMetricsTest, AKeyWithADeviceIsThatOfItsService) {
    EXPECT_EQ(&metrics->LastReport(ControlMetricsKey("a", "device-0", "port-0")).GetMetrics(), &a->figures);
}

TEST_F(ControlMetricsTest, AHandlerOfAnUnknownServiceIsRefusedAndNothingStarts) {
    EXPECT_EQ(Tests::StatusOf([&] { metrics->AddReportHandler(Record("x"), ControlMetricsKey("x")); }),
              yERROR_NOT_FOUND);
    EXPECT_FALSE(log.Contains(Started));
    EXPECT_TEXTLESS_FAILURE(metrics->RemoveReportHandler({}, ControlMetricsKey("x")), yERROR_PARAMETER);
}

TEST_F(ControlMetricsTest, AnEmptyHandlerGetsNoId) {
    EXPECT_FALSE(metrics->AddReportHandler(nullptr, keyA).IsSet());
    EXPECT_FALSE(metrics->AddReportHandler(nullptr, keyA).IsSet());
    metrics->RemoveReportHandler({}, keyA);
    EXPECT_TEXTLESS_FAILURE(metrics->RemoveReportHandler({}, keyA), yERROR_PARAMETER);
}

TEST_F(ControlMetricsTest, AHandlerThatFailsEndsTheWalkOfItsKeyOnly) {
    RefreshBeforeReports();
    metrics->AddReportHandler([](const IMetricsSource&) { Vor::Throw(yERROR_STATE, "no"); }, keyA);
    metrics->AddReportHandler(Record("a"), keyA);
    metrics->AddReportHandler(Record("b"), keyB);
    loop.Advance(1s);
    EXPECT_EQ(NewReports(), (Reports{"b 4"}));
    EXPECT_EQ(log.Count(Vor::LevelError, "Dispatching metrics exception for metrics source a"), 1U);
}

TEST_F(ControlMetricsTest, HandlersMayRemoveThemselvesAndOthersWhileTheyRun) {
    ControlMetrics::ReportEvent::CallbackId idA;
    ControlMetrics::ReportEvent::CallbackId idB;
    idA = metrics->AddReportHandler(
        [&](const IMetricsSource&) {
            reports.push_back("a");
            metrics->RemoveReportHandler(idB, keyB);
            metrics->RemoveReportHandler(idA, keyA);
        },
        keyA);
    idB = metrics->AddReportHandler(Record("b"), keyB);
    loop.Advance(3s);
    EXPECT_EQ(NewReports(), (Reports{"a"}));
    EXPECT_EQ(log.Count(Stopped), 1U);
}

TEST_F(ControlMetricsTest, IntervalsCanBeChangedAndTimersStopped) {
    EXPECT_EQ(metrics->ChangeUpdateInterval(100000), 250000U);
    EXPECT_EQ(metrics->ChangeUpdateInterval(100000), 100000U);
    metrics->AddReportHandler(Record("a"), keyA);
    EXPECT_EQ(metrics->ChangeReportInterval(500000), 1000000U);
    loop.Advance(500ms);
    EXPECT_EQ(NewReports().size(), 1U);
    EXPECT_EQ(a->figures.dropCount.Get(), 5);
    metrics->StopReportTimer();
    metrics->StopUpdateTimer();
    loop.Advance(2s);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(a->figures.dropCount.Get(), 5);
}

TEST_F(ControlMetricsTest, OfAServiceWithDevicesThePortsAreRefreshedAndReported) {
    Tests::FakeDeviceManager devices;
    devices.source.figures.dropCount = 7;
    a->Init({.params = &a->params, .metrics = &a->figures, .deviceManager = &devices});
    const ControlMetricsKey port("a", "device-0", "port-1");
    loop.Advance(500ms);
    EXPECT_EQ(devices.NewCalls(), (Reports{"UpdateDevicePortMetrics", "UpdateDevicePortMetrics"}));
    EXPECT_EQ(a->figures.dropCount.Get(), 0);
    EXPECT_EQ(b->figures.dropCount.Get(), 2);
    EXPECT_EQ(&metrics->LastReport(port), &devices.source);
    EXPECT_EQ(&metrics->LastReport(ControlMetricsKey("a", "", "port-1")), &devices.source);
    EXPECT_EQ(&metrics->LastReport(keyA), &manager->GetInstance("a").MetricsSource());
    EXPECT_EQ(devices.NewCalls(),
              (Reports{"DevicePortMetricsSource device-0 port-1", "DevicePortMetricsSource  port-1"}));
    const auto id = metrics->AddReportHandler(Record("port"), port);
    loop.Advance(1s);
    EXPECT_EQ(NewReports(), Reports{"port 7"});
    metrics->RemoveReportHandler(id, port);
    // The manager's handlers go before the devices.
    metrics.reset();
    manager.reset();
}

TEST_F(ControlMetricsTest, ReportsComeAgainAfterFiguresThatCouldntBeRead) {
    Tests::FakeDeviceManager devices;
    devices.source.figures.dropCount = 7;
    a->Init({.params = &a->params, .metrics = &a->figures, .deviceManager = &devices});
    const ControlMetricsKey port("a", "device-0", "port-1");
    const auto id = metrics->AddReportHandler(Record("port"), port);
    bool fails = true;
    devices.onMetricsSource = [&] {
        if (fails) {
            Vor::Throw(yERROR_NOT_FOUND, "the port has gone");
        }
    };
    loop.Advance(2s);
    EXPECT_TRUE(reports.empty());
    fails = false;
    loop.Advance(2s);
    EXPECT_EQ(NewReports(), (Reports{"port 7", "port 7"}));
    metrics->RemoveReportHandler(id, port);
    // The manager's handlers go before the devices.
    metrics.reset();
    manager.reset();
}

TEST_F(ControlMetricsTest, FiguresThatCantBeReadKeepNoOthersFromBeingReported) {
    RefreshBeforeReports();
    Tests::FakeDeviceManager devices;
    a->Init({.params = &a->params, .metrics = &a->figures, .deviceManager = &devices});
    const ControlMetricsKey port("a", "device-0", "port-1");
    const auto idOfPort = metrics->AddReportHandler(Record("port"), port);
    const auto idOfB = metrics->AddReportHandler(Record("b"), keyB);
    devices.onMetricsSource = [] { Vor::Throw(yERROR_NOT_FOUND, "the port has gone"); };
    loop.Advance(2s);
    EXPECT_EQ(NewReports(), (Reports{"b 4", "b 8"}));
    metrics->RemoveReportHandler(idOfPort, port);
    metrics->RemoveReportHandler(idOfB, keyB);
    // The manager's handlers go before the devices.
    metrics.reset();
    manager.reset();
}

TEST_F(ControlMetricsTest, APortOfAServiceWithoutDevicesIsTheService) {
    EXPECT_EQ(&metrics->LastReport(ControlMetricsKey("b", "device-0", "port-1")),
              &manager->GetInstance("b").MetricsSource());
}

TEST_F(ControlMetricsTest, NothingRunsAfterItsEnd) {
    metrics->AddReportHandler(Record("a"), keyA);
    metrics.reset();
    EXPECT_EQ(loop.Advance(5s), 0U);
    EXPECT_TRUE(reports.empty());
}

} // namespace
