#include "VorControl/Protocol/ControlDevicePortResource.h"

#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"
#include "Vor/DocumentErrors.h"

#include <stdexcept>

namespace {

using Json = nlohmann::json;
using VorApi::VorDataTree;
using VorControl::Protocol::ControlDevicePortResource;

class ControlDevicePortResourceTest : public Tests::DeviceResourceFixture {
protected:
    static constexpr const char* Ports = "/controls/io/devices/device-0/ports";
    static constexpr const char* Port0 = "/controls/io/devices/device-0/ports/port-0";
    static constexpr const char* Port2 = "/controls/io/devices/device-0/ports/port-2";

    ControlDevicePortResourceTest() {
        first->ports.push_back(2);
        first->params[2] = std::make_shared<Tests::PortParams>();
        Select();
        Listen(Ports);
    }

    /// The device goes without an event.
    void LoseDevice() {
        devices->Erase("p0");
        first.reset();
    }
    ControlDevicePortResource& Resource() { return As<ControlDevicePortResource>(ResourceAt(Ports)); }
};

TEST_F(ControlDevicePortResourceTest, TheCollectionEmbedsEachPort) {
    EXPECT_EQ(RelationsOf(Ports),
              (Texts{std::string("embed item[] ") + Port0, "embed item[] /controls/io/devices/device-0/ports/port-1",
                     std::string("embed item[] ") + Port2}));
    EXPECT_EQ(Read(Ports).Dump(false), "{}");
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, APortHasItsValuesAndTheParametersThatTheDeviceHas) {
    first->params[0]->name = "ejector";
    EXPECT_EQ(Read(Port0).Dump(false), R"({"displayName":"Port 0","portNumber":0,"id":"port-0",)"
                                       R"("parameters":{"name":"ejector","delay":0}})");
    EXPECT_EQ(RelationsOf(Port0), Texts{std::string("embed item[] ") + Port0 + "/registerAssemblies"});
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, APortWithoutANameIsDigitalWithItsNumber) {
    first->names[2] = "";
    EXPECT_EQ(Read(Port2)["displayName"].AsText(), "Digital 2");
}

TEST_F(ControlDevicePortResourceTest, TheSchemaOfTheParametersIsInPlace) {
    const VorDataTree document = ReadWithSchema(Port0);
    EXPECT_EQ(document.Names(), (Texts{"displayName", "portNumber", "id", "_schema", "parameters"}));
    EXPECT_EQ(document["parameters"].Names(), (Texts{"name", "delay"}));
    const VorDataTree properties = document["_schema"]["properties"];
    EXPECT_EQ(properties.Names(), (Texts{"displayName", "portNumber", "id", "parameters"}));
    EXPECT_EQ(properties["portNumber"]["minimum"].AsUInt64(), 0U);
    for (const char* const name : {"displayName", "portNumber", "id"}) {
        EXPECT_EQ(properties[name]["title"].AsText(), name);
        EXPECT_TRUE(properties[name]["readOnly"].AsBool()) << name;
    }
    EXPECT_EQ(properties["parameters"]["properties"]["delay"]["type"].AsText(), "integer");
}

TEST_F(ControlDevicePortResourceTest, AReadNeedsServiceDeviceAndPort) {
    const auto read = [&](const VorApi::RequestInfo::Keys& keys) {
        DocumentOf<ControlDevicePortResource>(Ports, keys);
    };
    EXPECT_TEXTLESS_FAILURE(read({}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(read({{"protocol", "io"}}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(read({{"port", "port-0"}}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(read({{"protocol", "io"}, {"port", "port-0"}}), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Read(std::string(Ports) + "/port-7"), yERROR_NOT_FOUND);
    EXPECT_THROW(Read("/controls/io/devices/device-1/ports"), std::out_of_range);
    EXPECT_THROW(Read("/controls/io/devices/device-1/ports/port-0"), std::out_of_range);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/devices/device-0/ports"), yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Read("/controls/bare/devices/device-0/ports/port-0"), yERROR_NOT_FOUND);
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, APortOfADeviceThatHasGoneIsNotFound) {
    LoseDevice();
    EXPECT_FAILURE(Read(Port0), yERROR_NOT_FOUND, "The active device 'device-0' is no longer available.");
    EXPECT_FAILURE(Update(Port0, {{"parameters", Json::object()}}), yERROR_NOT_FOUND,
                   "The active device 'device-0' is no longer available.");
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, APortWithoutParametersCantBeReadOrUpdated) {
    first->params.erase(0);
    EXPECT_FAILURE(Read(Port0), yERROR_STATE, "Parameters for the active device 'device-0' could not be found.");
    EXPECT_FAILURE(Update(Port0, {{"parameters", Json::object()}}), yERROR_STATE,
                   "Parameters for the active device 'device-0' could not be found.");
    EXPECT_EQ(first->NewCalls(), (Texts{"BeginUpdate 0", "EndUpdate 0"}));
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, AnUpdateChangesTheParametersInBothBracketsAndNotifies) {
    Texts steps;
    first->OnCall([&](const std::string& call) {
        steps.push_back(call + (environ.gate.Depth() == 1 && IsLocked() ? " inside" : " outside"));
        EXPECT_EQ(NewNotifications(), Texts{});
    });
    Update(Port0, {{"parameters", {{"delay", 30}}}});
    EXPECT_EQ(steps, (Texts{"BeginUpdate 0 inside", "EndUpdate 0 inside"}));
    EXPECT_EQ(NewNotifications(), Texts{std::string("2 ") + Port0});
    EXPECT_EQ(environ.registrar.announcements.size(), 1U);
    EXPECT_EQ(first->params[0]->delay.Get(), 30U);
    EXPECT_EQ(Read(Port0)["parameters"]["delay"].AsUInt64(), 30U);
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, WhatIsRefusedIsNamedAndChangesNothing) {
    try {
        Update(Port0, {{"parameters", {{"name", 7}, {"delay", -1}}}});
        FAIL() << "nothing was thrown";
    } catch (const Vor::DocumentException& e) {
        Texts places;
        for (const Vor::DocumentError& error : e.Errors()) {
            places.push_back(error.pointer);
        }
        EXPECT_EQ(places, (Texts{"/parameters/name", "/parameters/delay"}));
    }
    EXPECT_EQ(first->NewCalls(), (Texts{"BeginUpdate 0", "EndUpdate 0"}));
    EXPECT_EQ(NewNotifications(), Texts{});
    EXPECT_EQ(first->params[0]->delay.Get(), 0U);
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, AnUpdateWithoutParametersFailsBeforeAnythingElse) {
    for (const Json& body : {Json(nullptr), Json::object(), Json({{"delay", 1}}), Json(7)}) {
        EXPECT_TEXTLESS_FAILURE(Update(Port0, body), yERROR_PARAMETER);
        EXPECT_TEXTLESS_FAILURE(Update("/controls/x/devices/a/ports/b", body), yERROR_PARAMETER);
    }
    EXPECT_EQ(first->NewCalls(), Texts{});
    EXPECT_TRUE(environ.registrar.announcements.empty()) << "the bracket was never entered";
}

TEST_F(ControlDevicePortResourceTest, AnUpdateNeedsServiceDeviceAndPort) {
    const Json body = {{"parameters", Json::object()}};
    EXPECT_TEXTLESS_FAILURE(Resource().UpdateDocument(Request({}), body), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Resource().UpdateDocument(Request({{"protocol", "io"}}), body), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Resource().UpdateDocument(Request({{"protocol", "io"}, {"device", "device-0"}}), body),
                            yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Update(std::string(Ports) + "/port-7", body), yERROR_PARAMETER);
    EXPECT_THROW(Update("/controls/io/devices/device-1/ports/port-0", body), std::out_of_range);
    EXPECT_TEXTLESS_FAILURE(Update("/controls/bare/devices/device-0/ports/port-0", body), yERROR_NOT_FOUND);
    ExpectClosed();
}

TEST_F(ControlDevicePortResourceTest, PortsAreNeitherCreatedNorDeleted) {
    EXPECT_TEXTLESS_FAILURE(Rethrow(Create(Ports, Json::object())), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Delete(Port0), yERROR_UNIMPLEMENTED);
    EXPECT_FALSE(Resource().Creates());
    EXPECT_FALSE(Resource().Deletes());
}

TEST_F(ControlDevicePortResourceTest, AnUpdateDuringALoadIsNotNotified) {
    Load([this] {
        Resource().UpdateDocument(Request({{"protocol", "io"}, {"device", "device-0"}, {"port", "port-0"}}),
                                  {{"parameters", Json::object()}});
    });
    EXPECT_EQ(NewNotifications(), Texts{});
}

} // namespace
