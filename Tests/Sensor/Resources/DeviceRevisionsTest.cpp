// The devices of a service are part of its configuration, so they raise its revision.

#include "Sensor/Resources/Revisions.h"
#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"

#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace {

class DeviceRevisionsTest : public Tests::DeviceResourceFixture {
protected:
    static constexpr const char* Device = "/controls/io/devices/device-0";
    static constexpr const char* Port = "/controls/io/devices/device-0/ports/port-0";

    std::string Tag(const std::string& path) const { return revisions->TagOf(path).value_or("none"); }
    /// By how much the revision has risen since the last call.
    int Risen() {
        const std::string tag = Tag("/controls/io");
        const int now = std::stoi(tag.substr(tag.find('-') + 1));
        return now - std::exchange(revision, now);
    }

    std::unique_ptr<Sensor::Resources::Revisions> revisions =
        std::make_unique<Sensor::Resources::Revisions>("b0", *manager);
    int revision = 1;
};

TEST_F(DeviceRevisionsTest, EachPathOfADeviceHasTheTagButFigures) {
    const std::string port = Port;
    for (const std::string& path :
         {std::string("/controls/io/availableDevices"), std::string("/controls/io/devices"), std::string(Device), port,
          port + "/commands/trigger", port + "/registerAssemblies/registerAssembly-0/commands/add"}) {
        EXPECT_EQ(Tag(path), "\"b0-1\"") << path;
    }
    EXPECT_EQ(Tag(port + "/metrics"), "none");
    EXPECT_EQ(Tag(port + "/m%65trics/"), "none");
}

TEST_F(DeviceRevisionsTest, TheSelectionRaisesTheRevision) {
    Rethrow(Create("/controls/io/devices", {{"engineId", "engine"}, {"serialNumber", "1001"}}));
    EXPECT_EQ(Risen(), 1);
    EXPECT_NE(Tests::StatusOf([&] {
                  Rethrow(Create("/controls/io/devices", {{"engineId", "engine"}, {"serialNumber", "1002"}}));
              }),
              yOK);
    EXPECT_EQ(Risen(), 0) << "refused";
    Delete(Device);
    EXPECT_GT(Risen(), 0);
    EXPECT_EQ(Tag("/controls/full"), "\"b0-1\"");
}

TEST_F(DeviceRevisionsTest, ParametersOfAPortThatChangeRaiseTheRevision) {
    Select();
    Update(Port, {{"parameters", {{"delay", 3}}}});
    EXPECT_EQ(Risen(), 1);
    Update(Port, {{"parameters", {{"delay", 3}}}});
    EXPECT_EQ(Risen(), 0) << "nothing has changed";
    EXPECT_NE(Tests::StatusOf([&] { Update(Port, {{"parameters", {{"delay", "x"}}}}); }), yOK);
    EXPECT_EQ(Risen(), 0) << "refused";
    Update("/controls/io/devices/device-0/ports/port-1", {{"parameters", {{"delay", 3}}}});
    EXPECT_EQ(Risen(), 1);
}

TEST_F(DeviceRevisionsTest, DataSourcesOfAPortThatChangeRaiseTheRevision) {
    Select();
    Update(Port, {{"parameters", Json::object()}});
    Risen();
    const std::string commands = std::string(Port) + "/registerAssemblies/registerAssembly-0/commands";
    Invoke(commands + "/add", {{"blocks", {{{"type", "Measurement"}, {"dataSource", "a"}}}}});
    EXPECT_EQ(Risen(), 1);
    EXPECT_NE(Tests::StatusOf([&] { Invoke(commands + "/add", {{"blocks", {{{"type", "unknown"}}}}}); }), yOK);
    EXPECT_EQ(Risen(), 0) << "refused";
    Invoke(commands + "/removeAll");
    EXPECT_EQ(Risen(), 1);
}

TEST_F(DeviceRevisionsTest, ADeviceThatChangesOrGoesOnAnyThreadRaisesTheRevision) {
    Select();
    std::thread([this] { first->changed.Raise(); }).join();
    EXPECT_EQ(Risen(), 1);
    std::thread([this] { devices->removed.Raise("engine", "p0"); }).join();
    EXPECT_EQ(Risen(), 1);
    revisions.reset();
    devices->added.Raise("engine", "p0", first);
    Select();
    devices->removed.Raise("engine", "p0");
}

} // namespace
