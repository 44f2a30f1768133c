#include "Sensor/Io/OutputDevice.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Signal.h"
#include "Vor/JsonSerializer.h"
#include "Vor/Logging.h"
#include "Vor/MainLoop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Io {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

class OutputDeviceTest : public ::testing::Test {
protected:
    std::shared_ptr<OutputDevice> Make(std::chrono::milliseconds latency = 0ms) {
        auto device = std::make_shared<OutputDevice>(
            OutputDevice::Environ{.serialNumber = "1001", .latency = latency, .clock = clock, .changes = changes});
        device->Enable(true);
        return device;
    }
    static void Update(OutputDevice& device, unsigned long long port, const json& values) {
        Vor::Properties::JsonSerializer::Deserialize(*device.BeginUpdatePortParams(port), values);
        device.EndUpdatePortParams(port);
    }
    static json ParamsOf(const OutputDevice& device, unsigned long long port) {
        return Vor::Properties::JsonSerializer::Serialize(*device.PortParams(port));
    }
    static OutputDevice::PortState Port(const OutputDevice& device, std::size_t port) {
        return device.State(OutputPort::MaxEdges).ports.at(port);
    }
    /// Moves the clock on in steps until another thread's call has ended.
    yStatus StatusOnceTimePasses(std::future<yStatus>& call) {
        while (call.wait_for(1ms) != std::future_status::ready) {
            loop.Advance(1ms);
        }
        return call.get();
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
    std::shared_ptr<ScanClock> clock = std::make_shared<ScanClock>();
    std::shared_ptr<OutputPort::ChangeCount> changes = std::make_shared<OutputPort::ChangeCount>();
};

TEST_F(OutputDeviceTest, HasFourPortsForSoftwareEvents) {
    const auto device = Make();
    EXPECT_EQ(device->Device().Model(), "Virtual I/O 4");
    EXPECT_EQ(device->Device().SerialNumber(), "1001");
    EXPECT_EQ(device->Device().Status(), VorCommon::IDeviceProvider::DeviceStatus::Connected);
    EXPECT_EQ(device->Ports(), (std::vector<unsigned long long>{0, 1, 2, 3}));
    for (const unsigned long long port : device->Ports()) {
        EXPECT_EQ(device->BehaviourType(port), VorCommon::IDigitalOutputProvider::SoftwareEvents);
        EXPECT_EQ(device->DisplayName(port), "");
        EXPECT_NE(device->PortParams(port), nullptr);
    }
    EXPECT_EQ(device->PortParams(4), nullptr);
    EXPECT_EQ(device->BeginUpdatePortParams(4), nullptr);
    device->EndUpdatePortParams(4);
    EXPECT_EQ(device->BehaviourType(4), 0);
    EXPECT_EQ(device->DisplayName(4), "");
}

TEST_F(OutputDeviceTest, SwitchesOnePort) {
    const auto device = Make();
    EXPECT_EQ(device->SetOutputState(2, true, 5), yOK);
    EXPECT_TRUE(Port(*device, 2).on);
    EXPECT_FALSE(Port(*device, 1).on);
    EXPECT_EQ(Port(*device, 2).lastRequest->target, 5);
    EXPECT_FAILURE(device->SetOutputState(4, true, 0), yERROR_NOT_FOUND, "The device 1001 has no port 4.");
}

TEST_F(OutputDeviceTest, PulsesAndDelaysEndOnTheMainLoop) {
    const auto device = Make();
    Update(*device, 0, {{"mode", "pulse"}, {"pulseWidth", 1000}, {"delay", 500}});
    Update(*device, 1, {{"mode", "pulse"}, {"pulseWidth", 200}});
    clock->Start();
    device->SetOutputState(0, true, 0);
    device->SetOutputState(1, true, 0);
    loop.Advance(10ms);
    const auto first = Port(*device, 0).edges;
    ASSERT_EQ(first.size(), 2U);
    EXPECT_EQ(first[0].time, 500U);
    EXPECT_EQ(first[1].time, 1500U);
    const auto second = Port(*device, 1).edges;
    ASSERT_EQ(second.size(), 2U);
    EXPECT_EQ(second[0].time, 0U);
    EXPECT_EQ(second[1].time, 200U);
}

TEST_F(OutputDeviceTest, TargetsAreThoseOfTheScan) {
    const auto device = Make();
    Update(*device, 0, {{"schedule", "encoder"}});
    Update(*device, 1, {{"schedule", "time"}});
    EXPECT_FAILURE(device->SetOutputState(0, true, 1), yERROR_STATE,
                   "The device 1001 refuses a request for its port 0: no scan runs that could reach its target.");
    loop.Advance(5ms);
    clock->Start();
    device->OnScanChanged();
    device->SetOutputState(0, true, 1000);
    device->SetOutputState(1, true, 2000);
    for (std::uint64_t frame = 0; frame < 2; ++frame) {
        EXPECT_FALSE(Port(*device, 0).on);
        clock->SetFrame(frame, static_cast<std::int64_t>(frame) * 1000);
        device->OnFrame();
        loop.Advance(1500us);
    }
    EXPECT_EQ(Port(*device, 0).edges.at(0).frame, 1U);
    EXPECT_EQ(Port(*device, 0).edges.at(0).time, 1500U);
    EXPECT_EQ(Port(*device, 1).edges.at(0).time, 2000U);
    clock->Stop();
    device->OnScanChanged();
    loop.Advance(1s);
    device->SetOutputState(0, false, 0);
    EXPECT_EQ(Port(*device, 0).edges.at(1).time, 3000U);
}

TEST_F(OutputDeviceTest, TooManyThatWaitAreReported) {
    const auto device = Make();
    Update(*device, 0, {{"delay", 1000}});
    for (std::size_t i = 0; i < OutputPort::MaxWaiting; ++i) {
        ASSERT_EQ(device->SetOutputState(0, true, 0), yOK);
    }
    EXPECT_EQ(device->SetOutputState(0, true, 0), yERROR_FULL);
    EXPECT_EQ(device->SetOutputState(1, true, 0), yOK) << "each port has a queue of its own";
    loop.Advance(1ms);
    EXPECT_EQ(Port(*device, 0).counts.done, OutputPort::MaxWaiting);
}

TEST_F(OutputDeviceTest, IsIdleUnlessItIsDriven) {
    const auto device = Make();
    Update(*device, 1, {{"idle", "on"}});
    EXPECT_FALSE(Port(*device, 1).on);
    device->Enable(false);
    EXPECT_TRUE(Port(*device, 1).on);
    EXPECT_FALSE(device->State(0).enabled);
    EXPECT_FAILURE(device->SetOutputState(1, false, 0), yERROR_STATE,
                   "The device 1001 refuses a request for its port 1: nobody drives the device.");
    device->Enable(true);
    EXPECT_EQ(device->SetOutputState(1, false, 0), yOK);
    device->OnDeselected();
    EXPECT_TRUE(Port(*device, 1).on);
}

TEST_F(OutputDeviceTest, ParametersAreAppliedAtTheEndOfAnUpdate) {
    const auto device = Make();
    std::vector<unsigned long long> changedPorts;
    auto handler = device->AddParamsChangedHandler([&](unsigned long long port) {
        changedPorts.push_back(port);
        EXPECT_EQ(device->DisplayName(port), "Reject") << "no lock is held";
    });
    Update(*device, 3, {{"name", "Reject"}, {"behaviour", 1}, {"activeLow", true}});
    EXPECT_EQ(changedPorts, std::vector<unsigned long long>{3});
    EXPECT_EQ(device->BehaviourType(3), 1);
    EXPECT_TRUE(Port(*device, 3).high);
    Update(*device, 3, {{"name", "Reject"}});
    EXPECT_EQ(changedPorts.size(), 1U) << "nothing has changed";
    device->RemoveParamsChangedHandler(handler);
    Update(*device, 3, {{"name", ""}});
    EXPECT_EQ(changedPorts.size(), 1U);
    EXPECT_FAILURE(device->SetOutputState(3, true, 0), yERROR_STATE,
                   "The device 1001 refuses a request for its port 3: the port isn't for software events.");
}

TEST_F(OutputDeviceTest, SavedParametersMakeAnotherPortTheSame) {
    const auto device = Make();
    Update(*device, 0,
           {{"name", "Gate"},
            {"behaviour", 3},
            {"activeLow", true},
            {"mode", "pulse"},
            {"pulseWidth", 2000},
            {"delay", 30},
            {"schedule", "time"},
            {"idle", "keep"}});
    Update(*device, 1, ParamsOf(*device, 0));
    EXPECT_EQ(Port(*device, 1).settings, Port(*device, 0).settings);
    EXPECT_EQ(Port(*device, 1).settings.idle, PortIdle::Keep);
    EXPECT_EQ(Port(*device, 1).settings.pulseWidth, 2000us);
}

TEST_F(OutputDeviceTest, AValueOutsideOfItsLimitsStaysAsItWas) {
    const Vor::LogCapture log;
    const auto device = Make();
    Update(*device, 0, {{"pulseWidth", 5000}, {"name", "Gate"}});
    const json before = ParamsOf(*device, 0);
    for (const json& wrong : {json{{"pulseWidth", 99}}, json{{"pulseWidth", 10'000'001}}, json{{"delay", 10'000'001}},
                              json{{"behaviour", 4}}, json{{"mode", "blink"}}, json{{"schedule", ""}},
                              json{{"idle", "ON"}}, json{{"name", std::string(65, 'x')}}, json{{"name", "a\nb"}}}) {
        Update(*device, 0, wrong);
        EXPECT_EQ(ParamsOf(*device, 0), before) << wrong;
    }
    EXPECT_TRUE(log.Contains(Vor::UserWarning, "Port 0 of the device 1001: Delay is set to be greater than its "
                                               "maximum. It stays as it was."));
    Update(*device, 0, {{"pulseWidth", 99}, {"delay", 7}});
    EXPECT_EQ(Port(*device, 0).settings.delay, 7us) << "the others are applied";
}

TEST_F(OutputDeviceTest, ASerialNumberMayChange) {
    const auto device = Make();
    std::string notified;
    auto handler = device->AddChangedHandler([&] { notified = device->SerialNumber(); });
    device->ChangeSerialNumber("2002");
    EXPECT_EQ(notified, "2002");
    device->RemoveChangedHandler(handler);
    device->ChangeSerialNumber("3003");
    EXPECT_EQ(notified, "2002");
}

TEST_F(OutputDeviceTest, ACallTakesItsTime) {
    const auto device = Make(50ms);
    auto call = std::async(std::launch::async, [&] { return device->SetOutputState(0, true, 0); });
    EXPECT_FALSE(Port(*device, 0).on);
    EXPECT_EQ(device->SerialNumber(), "1001") << "no other call waits for it";
    device->Enable(true);
    EXPECT_EQ(StatusOnceTimePasses(call), yOK);
    EXPECT_TRUE(Port(*device, 0).on);
}

TEST_F(OutputDeviceTest, CallsCanFail) {
    const auto device = Make();
    device->SetCalls(OutputDevice::Calls::Fail);
    EXPECT_FAILURE(device->SetOutputState(0, true, 0), yERROR_TIMEOUT, "The device 1001 doesn't answer.");
    EXPECT_EQ(Port(*device, 0).counts.requests, 0U) << "it hasn't arrived";
    device->SetCalls(OutputDevice::Calls::Work);
    EXPECT_EQ(device->SetOutputState(0, true, 0), yOK);
}

TEST_F(OutputDeviceTest, ACallThatHangsHoldsUpNoOther) {
    const auto device = Make();
    device->SetCalls(OutputDevice::Calls::Hang);
    Tests::Signal begun;
    auto call = std::async(std::launch::async, [&] {
        begun.Set();
        return device->SetOutputState(0, true, 0);
    });
    ASSERT_TRUE(begun.Wait());
    loop.Advance(1h);
    EXPECT_FALSE(Port(*device, 0).on);
    EXPECT_EQ(device->Ports().size(), 4U);
    Update(*device, 0, {{"name", "x"}});
    device->SetCalls(OutputDevice::Calls::Work);
    EXPECT_EQ(call.get(), yOK);
    EXPECT_TRUE(Port(*device, 0).on);
}

TEST_F(OutputDeviceTest, AnUnpluggedOneLetsItsCallsFail) {
    const auto device = Make();
    Update(*device, 0, {{"idle", "off"}});
    device->SetOutputState(0, true, 0);
    device->SetCalls(OutputDevice::Calls::Hang);
    auto call = std::async(std::launch::async, [&] { return device->SetOutputState(1, true, 0); });
    device->Unplug();
    EXPECT_FAILURE(call.get(), yERROR_STATE, "The device 1001 isn't connected.");
    EXPECT_EQ(device->Status(), VorCommon::IDeviceProvider::DeviceStatus::NotConnected);
    device->Enable(true);
    EXPECT_FALSE(device->State(0).enabled);
    EXPECT_FALSE(Port(*device, 0).on);
}

TEST_F(OutputDeviceTest, MayGoWhileAPulseRuns) {
    auto device = Make();
    Update(*device, 0, {{"mode", "pulse"}});
    device->SetOutputState(0, true, 0);
    device.reset();
    EXPECT_EQ(loop.Advance(1s), 0U);
}

} // namespace
} // namespace Sensor::Io
