#include "Sensor/Scan/VirtualScanEngine.h"

#include "Vor/MainLoop.h"
#include "VorControl/Control/ControlScanEngineInterface.h"
#include "VorScan/Internal/ScanEngineManager.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Scan {
namespace {

using namespace std::chrono_literals;

class VirtualScanEngineTest : public testing::Test {
protected:
    VorScan::Internal::ScannerInstance& Scanner() { return engine->FindScanner("scanner-0"); }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    int triggers = 0;
    std::shared_ptr<Io::OutputDevices> devices =
        std::make_shared<Io::OutputDevices>(VirtualScanEngine::Id, Io::OutputDevices::Settings{.count = 2});
    std::unique_ptr<VorScan::Internal::ScanEngineInstance> engine = VirtualScanEngine::Make(
        {.trigger = [this] { ++triggers; }, .blinkLed = [](bool, bool) {}, .state = [] { return ScannerState(); }},
        {.time = 500ms, .outcome = AlignOutcome::Succeed}, devices);
};

TEST_F(VirtualScanEngineTest, HasOneScannerWithOneSensorAndTheNameOfItsType) {
    EXPECT_EQ(engine->Id(), "virtual");
    EXPECT_EQ(engine->Info().TypeName(), engine->Id());
    EXPECT_EQ(engine->ListScanners(), std::vector<std::string>{"scanner-0"});
    EXPECT_EQ(Scanner().ListSensors(), std::vector<std::string>{"sensor-0"});
}

TEST_F(VirtualScanEngineTest, ItsDevicesAreFoundAndSwitched) {
    VorScan::Internal::ScanEngineManager engines;
    engines.Add(std::move(engine));
    VorControl::ControlScanEngineInterface library(&engines);
    auto found = library.FindAvailableSensors();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].engineId, "virtual");
    EXPECT_EQ(found[1].providerId, "io-1");
    EXPECT_EQ(found[1].deviceModel, "Virtual I/O 4");
    EXPECT_EQ(found[1].serialNumber, "1002");
    EXPECT_EQ(found[1].deviceStatus, VorCommon::IDeviceProvider::DeviceStatus::Connected);
    const auto device = found[1].device.lock();
    device->Enable(true);
    EXPECT_EQ(library.SetDigitalOutputState(device, 3, true, 0), yOK);
    EXPECT_TRUE(devices->Find("io-1")->State(0).ports.at(3).on);
    devices->Unplug("io-1");
    EXPECT_EQ(library.FindAvailableSensors().size(), 1U);
}

TEST_F(VirtualScanEngineTest, ItsScannerTakesActions) {
    auto* const target = Scanner().Scanner().ActionTarget();
    ASSERT_NE(target, nullptr);
    target->ExecuteAction("trigger", target->ActionParameters("trigger"));
    EXPECT_EQ(triggers, 1);
}

TEST_F(VirtualScanEngineTest, ItsScannerAlignsAndTellsSo) {
    auto* const target = Scanner().CommandTarget();
    ASSERT_NE(target, nullptr);
    std::vector<VorScan::AlignState> states;
    Scanner().ScannerAlignStateUpdatedEvent().Add(
        [&] { states.push_back(Scanner().Scanner().AlignmentState().Get()); });
    std::vector<VorScan::AlignCompletionStatus> completions;
    Scanner().Scanner().AlignmentCompletedEvent().Add(
        [&](VorScan::AlignCompletionStatus status) { completions.push_back(status); });
    target->InvokeCommand("align", *target->GetCommandParams("align"));
    loop.Advance(500ms);
    EXPECT_EQ(states, (std::vector{VorScan::AlignState::Aligning, VorScan::AlignState::Aligned}));
    EXPECT_EQ(completions, std::vector{VorScan::AlignCompletionStatus::Succeeded});
}

TEST_F(VirtualScanEngineTest, MayGoWhileItAligns) {
    auto* const target = Scanner().CommandTarget();
    target->InvokeCommand("align", *target->GetCommandParams("align"));
    engine.reset();
    EXPECT_EQ(loop.Advance(1s), 0U);
}

} // namespace
} // namespace Sensor::Scan
