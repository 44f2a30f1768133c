#include "Sensor/Io/OutputDevices.h"

#include "Tests/Support/Failure.h"
#include "Vor/MainLoop.h"

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Sensor::Io {
namespace {

using Texts = std::vector<std::string>;
using Tests::StatusOf;

class OutputDevicesTest : public ::testing::Test {
protected:
    /// Each as "PROVIDER SERIAL".
    static Texts Listed(const OutputDevices& devices) {
        Texts texts;
        for (const auto& [providerId, provider] : devices.Providers()) {
            const auto device = provider.lock();
            texts.push_back(providerId + " " + (device != nullptr ? device->Device().SerialNumber() : "gone"));
        }
        return texts;
    }

    Vor::MainLoop loop{Vor::MainLoop::Mode::Manual};
};

TEST_F(OutputDevicesTest, ThereAreAsManyAsAreAskedFor) {
    EXPECT_EQ(Listed(OutputDevices("e", {})), Texts{"io-0 1001"});
    EXPECT_EQ(Listed(OutputDevices("e", {.count = 0})), Texts{});
    EXPECT_EQ(Listed(OutputDevices("e", {.count = 3})), (Texts{"io-0 1001", "io-1 1002", "io-2 1003"}));
    EXPECT_EQ(Listed(OutputDevices("e", {.count = 9})).size(), OutputDevices::MaxCount);
}

TEST_F(OutputDevicesTest, OneIsUnpluggedAndPluggedInAgain) {
    OutputDevices devices("e", {.count = 2});
    Texts events;
    auto addedHandler = devices.AddProviderAddedHandler([&](const std::string& engine, const std::string& id,
                                                            const std::shared_ptr<OutputDevices::Provider>& provider) {
        events.push_back("added " + engine + " " + id + " " + provider->Device().SerialNumber());
        EXPECT_EQ(Listed(devices).size(), 2U) << "no lock is held";
    });
    auto removedHandler = devices.AddProviderRemovedHandler([&](const std::string& engine, const std::string& id) {
        events.push_back("removed " + engine + " " + id);
        EXPECT_EQ(Listed(devices), Texts{"io-1 1002"});
    });
    const std::weak_ptr<OutputDevice> former = devices.Find("io-0");
    former.lock()->Enable(true);
    const std::uint64_t before = devices.ChangeCount();
    devices.Unplug("io-0");
    EXPECT_TRUE(former.expired());
    EXPECT_GT(devices.ChangeCount(), before);
    EXPECT_FAILURE(devices.Unplug("io-0"), yERROR_NOT_FOUND, "There is no device io-0.");
    EXPECT_EQ(StatusOf([&] { devices.Find("io-0"); }), yERROR_NOT_FOUND);
    devices.Plug("io-0");
    EXPECT_FALSE(devices.Find("io-0")->State(0).enabled) << "it was switched off";
    EXPECT_EQ(StatusOf([&] { devices.Plug("io-0"); }), yERROR_ALREADY_EXISTS);
    EXPECT_EQ(StatusOf([&] { devices.Plug("io-2"); }), yERROR_NOT_FOUND);
    EXPECT_EQ(events, (Texts{"removed e io-0", "added e io-0 1001"}));
    devices.RemoveProviderAddedHandler(addedHandler);
    devices.RemoveProviderRemovedHandler(removedHandler);
    devices.Unplug("io-1");
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(OutputDevicesTest, AChangedSerialNumberIsInTheList) {
    OutputDevices devices("e", {});
    devices.Find("io-0")->ChangeSerialNumber("7");
    EXPECT_EQ(Listed(devices), Texts{"io-0 7"});
}

TEST_F(OutputDevicesTest, TheScanReachesAllDevices) {
    OutputDevices devices("e", {.count = 2});
    for (const OutputDevices::Plugged& plugged : devices.Devices()) {
        plugged.device->Enable(true);
        const auto params = std::dynamic_pointer_cast<Io::PortParams>(plugged.device->BeginUpdatePortParams(0));
        params->schedule = "encoder";
        plugged.device->EndUpdatePortParams(0);
    }
    devices.OnScanStarted();
    for (const OutputDevices::Plugged& plugged : devices.Devices()) {
        plugged.device->SetOutputState(0, true, 1000);
        plugged.device->SetOutputState(0, false, 9000);
    }
    devices.OnFrame(0, 0);
    loop.Advance(std::chrono::milliseconds(3));
    devices.OnFrame(1, 1000);
    devices.OnScanStopped();
    for (const OutputDevices::Plugged& plugged : devices.Devices()) {
        const OutputDevice::PortState port = plugged.device->State(9).ports.at(0);
        ASSERT_EQ(port.edges.size(), 1U);
        EXPECT_EQ(port.edges[0].frame, 1U);
        EXPECT_EQ(port.edges[0].time, 3000U);
        EXPECT_EQ(port.counts.lost, 1U);
    }
}

TEST_F(OutputDevicesTest, TheirEndEndsCallsThatHang) {
    auto devices = std::make_unique<OutputDevices>("e", OutputDevices::Settings());
    auto device = devices->Find("io-0");
    device->SetCalls(OutputDevice::Calls::Hang);
    auto call =
        std::async(std::launch::async, [device = std::move(device)] { return device->SetOutputState(0, true, 0); });
    devices.reset();
    EXPECT_EQ(StatusOf([&] { call.get(); }), yERROR_STATE);
}

} // namespace
} // namespace Sensor::Io
