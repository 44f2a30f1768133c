// The tables of Docs/resources.md about devices agree with the documents.

#include "Tests/Support/DocumentTables.h"
#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"
#include "Vor/VorDataTreeSerializer.h"
#include "VorControl/Control/ControlMetrics.h"

namespace {

using Tests::Documented;
using Tests::Entries;
using Tests::Members;

class DevicePageTest : public Tests::DeviceResourceFixture {
protected:
    DevicePageTest() { Select(); }

    Json WithSchema(const std::string& path) { return ReadWithSchema(path).ToJson(); }

    const std::string device = "/controls/io/devices/device-0";
    const std::string port = device + "/ports/port-0";
};

TEST_F(DevicePageTest, ListsTheRelationsOfAService) {
    Entries relations;
    for (const auto& relation : Ask(VorRest::Verb::Read, "/controls/io").relations) {
        const std::string prefix = "/controls/io";
        relations[relation.name] = "/controls/:protocol" + relation.path.substr(prefix.size());
    }
    EXPECT_EQ(Documented("Relation of a service with devices", "Leads to"), relations);
}

TEST_F(DevicePageTest, ListsTheMembersOfTheDocuments) {
    const Json available = WithSchema("/controls/io/availableDevices");
    EXPECT_EQ(Documented("Member of the available devices", "Type"), Members(available));
    EXPECT_EQ(Documented("Member of an available device", "Type"), Members(Tests::FirstOf(available, "devices")));
    EXPECT_EQ(Documented("Member of the devices", "Type"), Members(WithSchema("/controls/io/devices")));
    EXPECT_EQ(Documented("Member of a device", "Type"), Members(WithSchema(device)));
    EXPECT_EQ(Documented("Member of a port", "Type"), Members(WithSchema(port)));
}

TEST_F(DevicePageTest, ListsTheMetricsOfAPort) {
    VorControl::ControlMetrics metrics(*manager);
    directory.reset();
    directory = std::make_unique<VorControl::ControlDir>(router, *manager, metrics);
    EXPECT_EQ(Documented("Metric of a port", "Type"), Members(WithSchema(port + "/metrics")));
    directory.reset();
}

TEST_F(DevicePageTest, ListsTheArgumentsOfATrigger) {
    const auto group = io->devices.DeviceCommandTarget().GetCommandParams("trigger");
    VorApi::VorDataTree arguments;
    Vor::Properties::VorDataTreeSerializer::Serialize(*group, arguments);
    Vor::Properties::VorDataTreeSerializer::SerializeSchema(*group, arguments["_schema"]);
    Json members = arguments.ToJson();
    members.erase("deviceId"); // the path has these
    members.erase("port");
    EXPECT_EQ(Documented("Argument of a trigger", "Type"), Members(members));
}

} // namespace
