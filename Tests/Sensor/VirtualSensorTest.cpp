#include "Sensor/VirtualSensor.h"

#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/VirtualScanEngine.h"
#include "Tests/Support/Failure.h"
#include "Tests/Support/TempFolder.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"
#include "VorApi/Params/PropertyValue.h"
#include "VorCore/CoreMetrics/CoreMetricsGroup.h"
#include "VorScan/Internal/ScanEngineInstance.h"
#include "VorScan/Internal/ScannerInstance.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

/// A sensor in triggered mode, so that no frame is published by time.
class VirtualSensorTest : public ::testing::Test {
protected:
    VirtualSensorTest() {
        sensor.PreStartScanEvent().Add([this] { events.push_back("pre-start"); });
        sensor.PostStopScanEvent().Add([this] { events.push_back("post-stop"); });
        sensor.FactoryRestoreEvent().Add([this] { events.push_back("factory restore"); });
    }

    VorScan::IScanner& Scanner() {
        return sensor.ScanEngines()
            .GetInstance(Scan::VirtualScanEngine::Id)
            .FindScanner(Scan::VirtualScanEngine::ScannerId)
            .Scanner();
    }

    void BlinkLed(bool blinks, bool on) {
        VorCommon::IActionTarget& target = *Scanner().ActionTarget();
        const auto params = target.ActionParameters("blinkLed");
        dynamic_cast<Vor::Properties::Value<bool>&>(*params->Find("ledBlinkEnabled")).Set(blinks);
        dynamic_cast<Vor::Properties::Value<bool>&>(*params->Find("ledLightOn")).Set(on);
        target.ExecuteAction("blinkLed", params);
    }

    Tests::TempFolder folder;
    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::vector<std::string> events;
    const Scan::Recording recording = Scan::GeneratePart();
    VirtualSensor sensor{recording,
                         {.scan = {.trigger = Scan::TriggerMode::Software},
                          .storageFolders = {folder.Path().string()},
                          .print = [this](const std::string& line) { events.push_back(line); },
                          .factoryRestore = [this] { events.push_back("restored"); },
                          .restart = [this] { events.push_back("restarted"); }}};
};

TEST_F(VirtualSensorTest, TheScanIsStartedAndStoppedBetweenItsEvents) {
    EXPECT_EQ(sensor.Core().GetRunState(), 0);
    sensor.Core().Start(true, false);
    EXPECT_EQ(sensor.Core().GetRunState(), 1);
    Scanner().ActionTarget()->ExecuteAction("trigger", nullptr);
    sensor.Core().Stop(false, false);
    EXPECT_EQ(sensor.Core().GetRunState(), 0);
    EXPECT_EQ(events, (std::vector<std::string>{"pre-start", "post-stop"}));
    EXPECT_THROW(Scanner().ActionTarget()->ExecuteAction("trigger", nullptr), Vor::Exception);
}

TEST_F(VirtualSensorTest, KnowsItsDataSourcesFromTheBeginning) {
    EXPECT_EQ(sensor.Pipe().List(),
              (std::vector<std::string>{"profile/max", "profile/mean", "profile/min", "profile/points", "profile/stamp",
                                        "profile/text", "profile/width"}));
    EXPECT_EQ(sensor.Pipe().Output("profile/max").displayName, "Maximum Height");
}

TEST_F(VirtualSensorTest, HasOneEngineWithOneScanner) {
    EXPECT_EQ(sensor.ScanEngines().List(), std::vector<std::string>{Scan::VirtualScanEngine::Id});
    EXPECT_NE(Scanner().CommandTarget(), nullptr);
}

TEST_F(VirtualSensorTest, ItsDevicesFollowTheEncoderOfTheScan) {
    const auto device = sensor.Devices().Find("io-0");
    device->Enable(true);
    const auto params = std::dynamic_pointer_cast<Io::PortParams>(device->BeginUpdatePortParams(0));
    params->schedule = "encoder";
    device->EndUpdatePortParams(0);
    for (int scan = 0; scan < 2; ++scan) {
        sensor.Core().Start(true, false);
        EXPECT_EQ(device->SetOutputState(0, true, 2000), yOK);
        EXPECT_EQ(device->SetOutputState(0, false, 3000), yOK);
        EXPECT_EQ(device->SetOutputState(0, true, 9000), yOK);
        for (int frame = 0; frame < 4; ++frame) {
            Scanner().ActionTarget()->ExecuteAction("trigger", nullptr);
            EXPECT_EQ(device->State(0).ports.at(0).on, frame == 2) << frame;
        }
        sensor.Core().Stop(false, false);
    }
    const Io::OutputDevice::PortState port = device->State(9).ports.at(0);
    ASSERT_EQ(port.edges.size(), 4U);
    EXPECT_EQ(port.edges[2].frame, 2U);
    EXPECT_EQ(port.edges[3].frame, 3U);
    EXPECT_EQ(port.counts.lost, 2U);
}

TEST_F(VirtualSensorTest, TellsTheUserOfItsLeds) {
    sensor.Core().BlinkLed();
    BlinkLed(true, false);
    BlinkLed(false, true);
    BlinkLed(false, false);
    EXPECT_EQ(events, (std::vector<std::string>{"System LED blinks.", "LED blinks.", "LED on.", "LED off."}));
}

TEST_F(VirtualSensorTest, AFactoryRestoreRaisesItsEventFirst) {
    sensor.Core().FactoryRestore();
    EXPECT_EQ(events, (std::vector<std::string>{"factory restore", "restored"}));
}

TEST_F(VirtualSensorTest, AFactoryRestoreGoesOnWhenAServiceFailsAtItsEvent) {
    const Vor::LogCapture log;
    auto failing = sensor.FactoryRestoreEvent().Add([] { throw std::runtime_error("no"); });
    sensor.Core().FactoryRestore();
    EXPECT_TRUE(log.Contains(Vor::LevelError, "A service failed at the factory restore."));
    sensor.FactoryRestoreEvent().Remove(failing);
    sensor.FactoryRestoreEvent().Add([] { throw 1; });
    sensor.Core().FactoryRestore();
    EXPECT_EQ(std::count(events.begin(), events.end(), "restored"), 2);
}

TEST_F(VirtualSensorTest, ARestartIsTheApplications) {
    sensor.Core().Restart();
    EXPECT_EQ(events, std::vector<std::string>{"restarted"});
}

TEST_F(VirtualSensorTest, MeasuresTheStorageOfItsFolders) {
    const auto& metrics =
        dynamic_cast<const VorCore::CoreMetrics::CoreMetricsGroup&>(sensor.Core().GetMetricsReporter());
    EXPECT_EQ(metrics.storageVolumes.Count(), 1U);
}

} // namespace
} // namespace Sensor
