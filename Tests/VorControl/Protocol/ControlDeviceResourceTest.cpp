#include "VorControl/Protocol/ControlDeviceResource.h"

#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"
#include "VorControl/Protocol/ControlAvailableDeviceResource.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace {

using Json = nlohmann::json;
using VorApi::VorDataTree;
using VorCommon::IDeviceProvider;
using VorControl::Protocol::ControlAvailableDeviceResource;
using VorControl::Protocol::ControlDeviceResource;

constexpr const char* IoAvailable = "/controls/io/availableDevices";
constexpr const char* IoDevices = "/controls/io/devices";
constexpr const char* IoDevice = "/controls/io/devices/device-0";

Json FirstDevice() {
    return {{"engineId", "engine"}, {"serialNumber", "1001"}};
}

class ControlAvailableDeviceResourceTest : public Tests::DeviceResourceFixture {
protected:
    ControlAvailableDeviceResourceTest() { Listen(IoAvailable); }
};

TEST_F(ControlAvailableDeviceResourceTest, ListsTheDevicesInTheOrderOfEngineAndProvider) {
    const auto other = std::make_shared<Tests::FakeOutputDevice>("m", "7", IDeviceProvider::DeviceStatus::NotConnected);
    devices->added.Raise("anEngine", "p9", other);
    EXPECT_EQ(Read(IoAvailable).Dump(false),
              R"({"devices":[{"deviceStatus":-1,"engineId":"anEngine","serialNumber":"7"},)"
              R"({"deviceStatus":0,"engineId":"engine","serialNumber":"1001"},)"
              R"({"deviceStatus":0,"engineId":"engine","serialNumber":"1002"}]})");
    EXPECT_EQ(RelationsOf(IoAvailable), Texts{});
    ExpectClosed();
}

TEST_F(ControlAvailableDeviceResourceTest, WithoutDevicesTheListIsEmpty) {
    devices->removed.Raise("engine", "p0");
    devices->removed.Raise("engine", "p1");
    EXPECT_EQ(Read(IoAvailable).Dump(false), R"({"devices":[]})");
}

TEST_F(ControlAvailableDeviceResourceTest, TheSchemaNamesTheStates) {
    const VorDataTree schema = ReadWithSchema(IoAvailable)["_schema"]["properties"]["devices"];
    EXPECT_EQ(schema["sortOrder"].AsUInt64(), 0U);
    const VorDataTree properties = schema["items"].At(0)["properties"];
    EXPECT_EQ(properties["deviceStatus"]["enum"].Dump(false), "[0,-1]");
    EXPECT_EQ(properties["deviceStatus"]["enumText"].Dump(false), R"(["Connected","Not Connected"])");
    for (const char* const name : {"deviceStatus", "engineId", "serialNumber"}) {
        EXPECT_EQ(properties[name]["title"].AsText(), name);
        EXPECT_TRUE(properties[name]["readOnly"].AsBool()) << name;
    }
}

TEST_F(ControlAvailableDeviceResourceTest, NeedsAServiceThatUsesDevices) {
    EXPECT_TEXTLESS_FAILURE(DocumentOf<ControlAvailableDeviceResource>(IoAvailable, {}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/availableDevices"), yERROR_NOT_FOUND);
    EXPECT_FAILURE(Read("/controls/x/availableDevices"), yERROR_NOT_FOUND,
                   "Control protocol type not recognized: 'x'.");
    EXPECT_TEXTLESS_FAILURE(Update(IoAvailable, Json::object()), yERROR_READ_ONLY);
}

TEST_F(ControlAvailableDeviceResourceTest, NotifiesOfEachChangeOfTheListButNotDuringALoad) {
    devices->removed.Raise("engine", "p1");
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + IoAvailable});
    Load([this] { devices->added.Raise("engine", "p1", second); });
    EXPECT_EQ(NewNotifications(), Texts{});
    first->changed.Raise();
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + IoAvailable});
}

TEST_F(ControlAvailableDeviceResourceTest, ADeviceMayChangeOnAnotherThreadWhileTheResourcesGo) {
    Listen(IoDevices);
    Select();
    std::atomic<int> changes = 0;
    std::atomic<bool> ends = false;
    std::thread changing([&] {
        while (!ends) {
            first->changed.Raise();
            ++changes;
        }
    });
    const auto waitForMore = [&] {
        const int before = changes;
        while (changes < before + 10) {
            std::this_thread::yield();
        }
    };
    waitForMore();
    directory.reset();
    waitForMore();
    ends = true;
    changing.join();
    EXPECT_GE(notifications.size(), 10U);
}

class ControlDeviceResourceTest : public Tests::DeviceResourceFixture {
protected:
    ControlDeviceResourceTest() { Listen(IoDevices); }
};

TEST_F(ControlDeviceResourceTest, TheCollectionEmbedsEachDeviceAndSaysWhatACreationTakes) {
    EXPECT_EQ(RelationsOf(IoDevices), Texts{});
    Select();
    EXPECT_EQ(RelationsOf(IoDevices), Texts{std::string("embed item[] ") + IoDevice});
    EXPECT_EQ(Read(IoDevices).Dump(false),
              R"({"creationParams":{"engineId":"","serialNumber":""},"maxDeviceCount":1})");
    const VorDataTree properties = ReadWithSchema(IoDevices)["_schema"]["properties"];
    EXPECT_TRUE(properties["creationParams"]["readOnly"].AsBool());
    EXPECT_EQ(properties["creationParams"]["properties"]["serialNumber"]["title"].AsText(), "serialNumber");
    EXPECT_EQ(properties["maxDeviceCount"]["title"].AsText(), "Max Device Count");
    EXPECT_TRUE(properties["maxDeviceCount"]["readOnly"].AsBool());
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, ADeviceHasItsValuesAndEmbedsItsPorts) {
    Select();
    first->status = IDeviceProvider::DeviceStatus::NotConnected;
    first->changed.Raise();
    EXPECT_EQ(Read(IoDevice).Dump(false),
              R"({"id":"device-0","displayName":"device-0","engineId":"engine","serialNumber":"1001",)"
              R"("deviceStatus":-1})");
    EXPECT_EQ(RelationsOf(IoDevice), Texts{std::string("embed item[] ") + IoDevice + "/ports"});
    const VorDataTree properties = ReadWithSchema(IoDevice)["_schema"]["properties"];
    for (const char* const name : {"id", "displayName", "engineId", "serialNumber", "deviceStatus"}) {
        EXPECT_EQ(properties[name]["title"].AsText(), std::string(name) == "displayName" ? "Display Name" : name);
        EXPECT_TRUE(properties[name]["readOnly"].AsBool()) << name;
    }
    EXPECT_EQ(properties["deviceStatus"]["enumText"].Dump(false), R"(["Connected","Not Connected"])");
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, AReadNeedsServiceDeviceAndDevices) {
    const auto read = [&](const VorApi::RequestInfo::Keys& keys) { DocumentOf<ControlDeviceResource>(IoDevice, keys); };
    EXPECT_TEXTLESS_FAILURE(read({}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(read({{"device", "device-0"}}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/devices"), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/devices/device-0"), yERROR_PARAMETER);
    EXPECT_THROW(Read(IoDevice), std::out_of_range);
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, CantBeUpdated) {
    Select();
    EXPECT_TEXTLESS_FAILURE(Update(IoDevice, Json::object()), yERROR_UNIMPLEMENTED);
}

TEST_F(ControlDeviceResourceTest, ACreationSelectsTheDeviceInTheBracketAndNotifies) {
    io->devices.SelectedDeviceAddedEvent().Add(
        [this](const auto&, const std::string&) { EXPECT_EQ(environ.gate.Depth(), 1); });
    const VorRest::Answer answer = Create(IoDevices, FirstDevice());
    Rethrow(answer);
    EXPECT_EQ(answer.id, "device-0");
    EXPECT_EQ(answer.path, IoDevice);
    EXPECT_EQ(NewNotifications(), (Texts{std::string("2 ") + IoDevices, std::string("1 ") + IoDevice}));
    EXPECT_EQ(environ.registrar.announcements.size(), 1U);
    EXPECT_EQ(Read(IoDevice)["serialNumber"].AsText(), "1001");
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, ACreationNeedsADeviceThatThereIs) {
    EXPECT_EQ(Tests::StatusOf([&] { Rethrow(Create(IoDevices, Json::object())); }), yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([&] { Rethrow(Create(IoDevices, nullptr)); }), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Rethrow(Create(IoDevices, {{"engineId", "engine"}})), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Rethrow(Create(IoDevices, {{"serialNumber", "1001"}})), yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([&] {
                  Rethrow(Create(IoDevices, {{"engineId", 7}, {"serialNumber", "1001"}}));
              }),
              yERROR_PARAMETER);
    EXPECT_FAILURE(Rethrow(Create(IoDevices, {{"engineId", "engine"}, {"serialNumber", "9"}})), yERROR_PARAMETER,
                   "No device with serial number 9 found.");
    EXPECT_TEXTLESS_FAILURE(Rethrow(Create("/controls/bare/devices", FirstDevice())), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(As<ControlDeviceResource>(ResourceAt(IoDevices)).Create(Request({}), FirstDevice()),
                            yERROR_PARAMETER);
    EXPECT_TRUE(io->devices.SelectedDevices().empty());
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, OneDeviceCanBeSelected) {
    Rethrow(Create(IoDevices, FirstDevice()));
    EXPECT_TEXTLESS_FAILURE(Rethrow(Create(IoDevices, {{"engineId", "engine"}, {"serialNumber", "1002"}})),
                            yERROR_FULL);
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, ADeletionNotifiesOnceByItselfAndOnceByTheManager) {
    Select();
    io->devices.SelectedDeviceRemovedEvent().Add(
        [this](const auto&, const std::string&, bool) { EXPECT_EQ(environ.gate.Depth(), 1); });
    Delete(IoDevice);
    EXPECT_EQ(NewNotifications(),
              (Texts{std::string("3 ") + IoDevice, std::string("2 ") + IoDevices, std::string("3 ") + IoDevice}));
    EXPECT_TRUE(io->devices.SelectedDevices().empty());
    EXPECT_EQ(first->NewCalls(), Texts{"OnDeselected"});
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, ADeletionNeedsADeviceThatIsSelected) {
    auto& resource = As<ControlDeviceResource>(ResourceAt(IoDevices));
    EXPECT_TEXTLESS_FAILURE(resource.Delete(Request({})), yERROR_PARAMETER);
    EXPECT_FAILURE(resource.Delete(Request({{"protocol", "io"}})), yERROR_PARAMETER, "Invalid device id specified.");
    EXPECT_TEXTLESS_FAILURE(Delete("/controls/bare/devices/device-0"), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Delete(IoDevice), yERROR_NOT_FOUND);
    ExpectClosed();
}

TEST_F(ControlDeviceResourceTest, ChangesByThemselvesAreNotifiedAlsoDuringALoad) {
    Select();
    first->changed.Raise();
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + IoDevice});
    Load([this] {
        first->changed.Raise();
        devices->removed.Raise("engine", "p0");
    });
    EXPECT_EQ(NewNotifications(), (Texts{std::string("2 ") + IoDevice, std::string("3 ") + IoDevice}));
}

TEST_F(ControlDeviceResourceTest, AServiceNamesItsDevices) {
    EXPECT_EQ(RelationsOf("/controls/io"), (Texts{std::string("embed vor:availableIoDevices ") + IoAvailable,
                                                  std::string("embed vor:ioDevices ") + IoDevices}));
    EXPECT_EQ(RelationsOf("/controls/bare"), Texts{});
}

} // namespace
