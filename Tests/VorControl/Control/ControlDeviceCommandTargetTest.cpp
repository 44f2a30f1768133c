#include "VorControl/Control/ControlDeviceCommandTarget.h"

#include "Tests/Support/Failure.h"
#include "Tests/Support/Translations.h"
#include "Vor/JsonSerializer.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using VorControl::ControlDeviceCommandTarget;
using Arguments = VorControl::ControlDevicesCommandTriggerDigitalOutputProperties;

namespace {

constexpr const char* NoParameters = "The command 'Trigger' does not exist. No parameters available";
constexpr const char* Ignored = "The command 'Trigger' does not exist. Command ignored.";

class ControlDeviceCommandTargetTest : public testing::Test {
protected:
    ControlDeviceCommandTargetTest() {
        for (const char* const name : {"a", "b"}) {
            target.GetTriggerDigitalOutputEvent().Add(
                [this, name](const std::string& device, const std::string& port, long long at, bool value) {
                    triggers.push_back(std::string(name) + " " + device + " " + port + " " + std::to_string(at) +
                                       (value ? " on" : " off"));
                });
        }
    }

    ControlDeviceCommandTarget target;
    std::vector<std::string> triggers;
};

} // namespace

TEST_F(ControlDeviceCommandTargetTest, HasOneCommand) {
    const auto commands = target.ListCommands();
    ASSERT_EQ(commands.size(), 1U);
    EXPECT_EQ(commands.front().Id(), "trigger");
    EXPECT_EQ(commands.front().DisplayName(), "Trigger");
    EXPECT_TRUE(target.IsCommandSupported("trigger"));
    EXPECT_FALSE(target.IsCommandSupported("Trigger"));
    EXPECT_FALSE(target.IsCommandSupported(""));
}

TEST_F(ControlDeviceCommandTargetTest, ParametersAreANewGroupEachTime) {
    const auto first = target.GetCommandParams("trigger");
    const auto second = target.GetCommandParams("trigger");
    EXPECT_NE(first, second);
    EXPECT_NE(dynamic_cast<Arguments*>(first.get()), nullptr);
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(*first).dump(),
              R"({"deviceId":"","port":"","target":0,"value":false})");
    const json schema = Vor::Properties::JsonSerializer::SerializeSchema(*first);
    int order = 0;
    for (const char* const key : {"deviceId", "port", "target", "value"}) {
        EXPECT_EQ(schema.at("properties").at(key).at("title"), key);
        EXPECT_EQ(schema.at("properties").at(key).at("sortOrder"), order);
        order += 100;
    }
}

TEST_F(ControlDeviceCommandTargetTest, TriggerCallsEachHandlerInOrderAndReturnsAnEmptyGroup) {
    const auto params = target.GetCommandParams("trigger");
    Vor::Properties::JsonSerializer::Deserialize(
        *params, json{{"deviceId", "device-0"}, {"port", "port-3"}, {"target", -5}, {"value", true}});
    const auto result = target.InvokeCommand("trigger", *params);
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(Vor::Properties::JsonSerializer::Serialize(*result).empty());
    EXPECT_EQ(triggers, (std::vector<std::string>{"a device-0 port-3 -5 on", "b device-0 port-3 -5 on"}));
}

TEST_F(ControlDeviceCommandTargetTest, AFailureOfAHandlerIsThrown) {
    target.GetTriggerDigitalOutputEvent().Add(
        [](const std::string&, const std::string&, long long, bool) { Vor::Throw(yERROR_STATE, "not now"); });
    Arguments arguments;
    EXPECT_FAILURE(target.InvokeCommand("trigger", arguments), yERROR_STATE, "not now");
}

TEST_F(ControlDeviceCommandTargetTest, AnUnknownCommandIsRefusedBeforeItsArgumentsAreLookedAt) {
    Vor::Params::Group other;
    VorGetText::GetInstance().ForgetCalls();
    EXPECT_FAILURE(target.GetCommandParams("Trigger"), yERROR_NOT_FOUND, NoParameters);
    EXPECT_FAILURE(target.InvokeCommand("Trigger", other), yERROR_NOT_FOUND, Ignored);
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "The command '%s' does not exist. No parameters available"));
    EXPECT_TRUE(Tests::WasTranslated("beApp.ctrl", "The command '%s' does not exist. Command ignored."));
}

TEST_F(ControlDeviceCommandTargetTest, ArgumentsOfAnotherClassAreRefused) {
    Vor::Params::Group other;
    EXPECT_FAILURE(target.InvokeCommand("trigger", other), yERROR_PARAMETER,
                   "The arguments of 'trigger' must be those that its parameters have");
    EXPECT_TRUE(triggers.empty());
}
