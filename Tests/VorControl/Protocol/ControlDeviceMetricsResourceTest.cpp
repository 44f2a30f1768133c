#include "VorControl/Protocol/ControlDeviceMetricsResource.h"

#include "Tests/Support/StreamReceiver.h"
#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"
#include "VorControl/Control/ControlMetrics.h"

#include <optional>
#include <thread>

namespace {

using Tests::StreamReceiver;
using VorApi::VorDataTree;
using VorControl::Protocol::ControlDeviceMetricsResource;

class ControlDeviceMetricsResourceTest : public Tests::DeviceResourceFixture {
protected:
    ControlDeviceMetricsResourceTest() {
        Select();
        for (const char* const device : {"device-0", "device-1"}) {
            for (const char* const port : {"port-0", "port-1"}) {
                reporter.keys.emplace("io", device, port);
            }
        }
        reporter.keys.emplace("full", "device-0", "port-0");
    }

    static VorApi::RequestInfoEx PortOf(const char* service, const char* device, const char* port) {
        return Request({{"protocol", service}, {"device", device}, {"port", port}});
    }

    ControlDeviceMetricsResource resource{reporter, *manager};
};

TEST_F(ControlDeviceMetricsResourceTest, TheDocumentHasTheFiguresOfThePortAndTheirSchemaIfTheClientWantsIt) {
    VorControl::ControlMetrics metrics(*manager);
    directory.reset();
    directory = std::make_unique<VorControl::ControlDir>(router, *manager, metrics);
    Port("port-1")->SetHighCount(3);
    Port("port-1")->SetDropCount(2);
    Port("port-1")->IncrementDiscardCount(5);
    Port("port-1")->UpdateMetrics();
    const std::string path = "/controls/io/devices/device-0/ports/port-1/metrics";
    EXPECT_EQ(Read(path).Dump(false), R"({"dropCount":7,"highCount":3,"lowCount":0})");
    EXPECT_EQ(ReadWithSchema(path)["_schema"]["properties"].Names(), (Texts{"dropCount", "highCount", "lowCount"}));
    EXPECT_FAILURE(Read("/controls/io/devices/device-1/ports/port-1/metrics"), yERROR_NOT_FOUND,
                   "Io: Active device with device id 'device-1' not found.");
    EXPECT_FAILURE(Read("/controls/io/devices/device-0/ports/port-7/metrics"), yERROR_NOT_FOUND,
                   "Io: Port 'port-7' not found for device with device id 'device-0'.");
    EXPECT_EQ(Read("/controls/full/devices/device-0/ports/port-1/metrics").ToJson(),
              Read("/controls/full/metrics").ToJson())
        << "a service without devices has its own";
    directory.reset();
}

TEST_F(ControlDeviceMetricsResourceTest, ARequestNeedsServiceDeviceAndPort) {
    StreamReceiver receiver;
    const auto check = [&](const VorApi::RequestInfo::Keys& keys, const char* text) {
        VorApi::ResponseInfoEx response;
        VorDataTree data;
        EXPECT_FAILURE(resource.Document(Request(keys), response, data), yERROR_PARAMETER, text);
        EXPECT_FAILURE(resource.StartStream(Request(keys), receiver), yERROR_PARAMETER, text);
    };
    check({}, "Missing control protocol name in request");
    check({{"protocol", "io"}}, "Missing device id in request");
    check({{"protocol", "io"}, {"device", "device-0"}}, "Missing port id in request");
    EXPECT_EQ(Tests::StatusOf([&] { resource.StartStream(PortOf("io", "device-7", "port-0"), receiver); }),
              yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(resource.StopStream(0), yERROR_PARAMETER);
}

TEST_F(ControlDeviceMetricsResourceTest, AStreamHasTheFiguresOnly) {
    StreamReceiver receiver;
    resource.StartStream(PortOf("io", "device-0", "port-0"), receiver);
    reporter.event.Raise(reporter.source);
    EXPECT_EQ(receiver.messages, Texts{R"({"dropCount":0})"});
    resource.StopStream(0);
}

TEST_F(ControlDeviceMetricsResourceTest, ADeviceThatIsRemovedEndsItsStreamsAndNoOthers) {
    StreamReceiver port0("port 0");
    StreamReceiver port1("port 1");
    StreamReceiver otherDevice;
    StreamReceiver otherService;
    resource.StartStream(PortOf("io", "device-0", "port-0"), port0);
    resource.StartStream(PortOf("io", "device-1", "port-0"), otherDevice);
    resource.StartStream(PortOf("full", "device-0", "port-0"), otherService);
    resource.StartStream(PortOf("io", "device-0", "port-1"), port1);
    io->devices.DeleteSelectedDevice("device-0", false);
    EXPECT_EQ(port0.aborts, 0) << "the main loop does it";
    loop.RunReady();
    EXPECT_EQ(port0.aborts, 1);
    EXPECT_EQ(port1.aborts, 1);
    EXPECT_EQ(otherDevice.aborts, 0);
    EXPECT_EQ(otherService.aborts, 0);
    EXPECT_EQ(log.Count("Stopping stream port 0, id 0"), 1U);
    EXPECT_EQ(log.Count("Stopping stream port 1, id 3"), 1U);
    for (const unsigned int id : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(Tests::StatusOf([&] { resource.StopStream(id); }), yOK) << "the receiver ends its stream";
    }
}

TEST_F(ControlDeviceMetricsResourceTest, AReceiverMayStopStreamsWhileItIsAborted) {
    StreamReceiver first;
    StreamReceiver second;
    resource.StartStream(PortOf("io", "device-0", "port-0"), first);
    resource.StartStream(PortOf("io", "device-0", "port-1"), second);
    first.onAbort = [&] {
        resource.StopStream(0);
        resource.StopStream(1);
    };
    io->devices.DeleteSelectedDevice("device-0", false);
    loop.RunReady();
    EXPECT_EQ(first.aborts, 1);
    EXPECT_EQ(second.aborts, 0) << "it was stopped, and may be gone";
}

TEST_F(ControlDeviceMetricsResourceTest, ADeviceMayBeRemovedOnAnotherThread) {
    StreamReceiver receiver;
    std::optional<std::thread::id> thread;
    receiver.onAbort = [&] { thread = std::this_thread::get_id(); };
    resource.StartStream(PortOf("io", "device-0", "port-0"), receiver);
    std::thread([this] { devices->removed.Raise("engine", "p0"); }).join();
    loop.RunReady();
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(ControlDeviceMetricsResourceTest, NothingIsAbortedAfterTheResourceHasGone) {
    StreamReceiver receiver;
    {
        ControlDeviceMetricsResource other(reporter, *manager);
        other.StartStream(PortOf("io", "device-0", "port-0"), receiver);
        io->devices.DeleteSelectedDevice("device-0", false);
    }
    loop.RunReady();
    Select();
    io->devices.DeleteSelectedDevice("device-0", false);
    loop.RunReady();
    EXPECT_EQ(receiver.aborts, 0);
    // The handler of its stream goes with the reporter.
}

} // namespace
