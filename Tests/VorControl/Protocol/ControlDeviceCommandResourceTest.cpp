#include "VorControl/Protocol/ControlDeviceCommandResource.h"

#include "Tests/VorControl/Protocol/DeviceResourceFixture.h"

namespace {

using Json = nlohmann::json;
using VorControl::Protocol::ControlDeviceCommandResource;

class ControlDeviceCommandResourceTest : public Tests::DeviceResourceFixture {
protected:
    static constexpr const char* PortCommands = "/controls/io/devices/device-0/ports/port-1/commands";
    static constexpr const char* Trigger = "/controls/io/devices/device-0/ports/port-1/commands/trigger";

    ControlDeviceCommandResourceTest() {
        Select();
        operations.NewCalls();
    }

    bool IsCommand(const std::string& path) {
        const auto match = router.Find(path);
        return As<ControlDeviceCommandResource>(match->resource).IsCommand(Request(match->keys));
    }
};

TEST_F(ControlDeviceCommandResourceTest, ATriggerQueuesTheOutputAndReturnsNothing) {
    EXPECT_EQ(Invoke(Trigger, {{"parameters", {{"target", -5}, {"value", true}}}}).Dump(false), "{}");
    EXPECT_EQ(operations.NewCalls(), Texts{"set io 1001 1 false true -5"});
    EXPECT_EQ(Invoke(Trigger, {{"parameters", Json::object()}}).Dump(false), "{}");
    EXPECT_EQ(operations.NewCalls(), Texts{"set io 1001 1 false false 0"});
    EXPECT_EQ(first->NewCalls(), Texts{}) << "it is switched later";
    ExpectClosed();
}

TEST_F(ControlDeviceCommandResourceTest, ThePortIsThatOfThePathWhateverTheBodySays) {
    Invoke(Trigger, {{"parameters", {{"deviceId", "device-7"}, {"port", "port-0"}, {"value", true}}}, {"port", 7}});
    EXPECT_EQ(operations.NewCalls(), Texts{"set io 1001 1 false true 0"});
}

TEST_F(ControlDeviceCommandResourceTest, TheArgumentsAreUnderParameters) {
    EXPECT_TEXTLESS_FAILURE(Invoke(Trigger), yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Invoke(Trigger, {{"value", true}}), yERROR_PARAMETER);
    EXPECT_EQ(Tests::StatusOf([&] { Invoke(Trigger, {{"parameters", {{"value", "yes"}}}}); }), yERROR_PARAMETER);
    EXPECT_EQ(operations.NewCalls(), Texts{});
}

TEST_F(ControlDeviceCommandResourceTest, HasNoDocumentAndTakesNoUpdate) {
    EXPECT_TEXTLESS_FAILURE(Read(PortCommands), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Read(Trigger), yERROR_UNIMPLEMENTED);
    EXPECT_TEXTLESS_FAILURE(Update(Trigger, Json::object()), yERROR_UNIMPLEMENTED);
}

TEST_F(ControlDeviceCommandResourceTest, ARequestNeedsServiceDevicePortAndCommand) {
    auto& resource = As<ControlDeviceCommandResource>(ResourceAt(Trigger));
    VorApi::RequestInfo::Keys keys;
    for (const auto& [name, value] : {std::pair("protocol", "io"), std::pair("device", "device-0"),
                                      std::pair("port", "port-1"), std::pair("command", "trigger")}) {
        EXPECT_TEXTLESS_FAILURE(resource.Invoke(Request(keys), VorApi::VorDataTree()), yERROR_PARAMETER);
        EXPECT_FALSE(resource.IsCommand(Request(keys)));
        keys[name] = value;
    }
    EXPECT_TRUE(resource.IsCommand(Request(keys)));
}

TEST_F(ControlDeviceCommandResourceTest, WhatThereIsNotCantBeTriggered) {
    const Json body = {{"parameters", Json::object()}};
    EXPECT_TEXTLESS_FAILURE(Invoke("/controls/bare/devices/device-0/ports/port-1/commands/trigger", body),
                            yERROR_PARAMETER);
    EXPECT_TEXTLESS_FAILURE(Invoke("/controls/io/devices/device-1/ports/port-1/commands/trigger", body),
                            yERROR_NOT_FOUND);
    EXPECT_TEXTLESS_FAILURE(Invoke("/controls/io/devices/device-0/ports/port-7/commands/trigger", body),
                            yERROR_NOT_FOUND);
    EXPECT_FAILURE(Invoke(std::string(PortCommands) + "/pull", body), yERROR_NOT_FOUND,
                   "The command 'pull' does not exist. No parameters available");
    for (const char* const path : {"/controls/bare/devices/device-0/ports/port-1/commands/trigger",
                                   "/controls/io/devices/device-1/ports/port-1/commands/trigger",
                                   "/controls/io/devices/device-0/ports/port-7/commands/trigger",
                                   "/controls/io/devices/device-0/ports/port-1/commands/pull", PortCommands}) {
        EXPECT_FALSE(IsCommand(path)) << path;
    }
    EXPECT_TRUE(IsCommand(Trigger));
}

TEST_F(ControlDeviceCommandResourceTest, APortThatSwitchesByItselfIsRefused) {
    first->behaviours[1] = 1;
    EXPECT_FAILURE(Invoke(Trigger, {{"parameters", Json::object()}}), yERROR_STATE,
                   "Digital output device with serial number '1001' is not configured for software events on port 1.");
    ExpectClosed();
}

} // namespace
