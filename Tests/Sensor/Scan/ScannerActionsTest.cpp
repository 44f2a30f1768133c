#include "Sensor/Scan/ScannerActions.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorApi/Params/PropertyValue.h"

#include <optional>
#include <utility>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Scan {
namespace {

class ScannerActionsTest : public testing::Test {
protected:
    nlohmann::json Info() {
        return Vor::Properties::JsonSerializer::Serialize(
            *actions.ExecuteAction("scannerInfo", actions.ActionParameters("scannerInfo")));
    }

    int triggers = 0;
    bool triggerFails = false;
    std::optional<std::pair<bool, bool>> blink;
    ScannerState state;
    ScannerActions actions{{.trigger =
                                [this] {
                                    if (triggerFails) {
                                        Vor::Throw(yERROR_STATE, "not now");
                                    }
                                    ++triggers;
                                },
                            .blinkLed =
                                [this](bool enabled, bool lightOn) {
                                    blink = {enabled, lightOn};
                                },
                            .state = [this] { return state; }}};
};

TEST_F(ScannerActionsTest, ListsWhatItHas) {
    std::vector<std::string> ids;
    for (const auto& action : actions.Actions()) {
        ids.push_back(action.Id());
        EXPECT_TRUE(actions.HasAction(action.Id()));
        EXPECT_NE(actions.ActionParameters(action.Id()), nullptr);
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"trigger", "blinkLed", "scannerInfo"}));
}

TEST_F(ScannerActionsTest, HasNothingElse) {
    EXPECT_FALSE(actions.HasAction("Trigger"));
    EXPECT_FALSE(actions.HasAction("align"));
    EXPECT_EQ(actions.ActionParameters("align"), nullptr);
    EXPECT_FAILURE(actions.ExecuteAction("align", nullptr), yERROR_NOT_FOUND, "The scanner has no action 'align'.");
}

TEST_F(ScannerActionsTest, TriggerMakesOneFrame) {
    const auto result = actions.ExecuteAction("trigger", actions.ActionParameters("trigger"));
    ASSERT_NE(result, nullptr);
    EXPECT_TRUE(result->Members().empty());
    EXPECT_EQ(triggers, 1);
}

TEST_F(ScannerActionsTest, ATriggerThatFailsIsTheCallersToHandle) {
    triggerFails = true;
    EXPECT_FAILURE(actions.ExecuteAction("trigger", nullptr), yERROR_STATE, "not now");
}

TEST_F(ScannerActionsTest, BlinkLedTakesItsTwoParameters) {
    const auto params = actions.ActionParameters("blinkLed");
    dynamic_cast<Vor::Properties::Value<bool>&>(params->At("ledBlinkEnabled")) = true;
    actions.ExecuteAction("blinkLed", params);
    EXPECT_EQ(blink, std::pair(true, false));
    dynamic_cast<Vor::Properties::Value<bool>&>(params->At("ledBlinkEnabled")) = false;
    dynamic_cast<Vor::Properties::Value<bool>&>(params->At("ledLightOn")) = true;
    actions.ExecuteAction("blinkLed", params);
    EXPECT_EQ(blink, std::pair(false, true));
}

TEST_F(ScannerActionsTest, ParametersAreTheCallersOwn) {
    const auto params = actions.ActionParameters("blinkLed");
    dynamic_cast<Vor::Properties::Value<bool>&>(params->At("ledLightOn")) = true;
    actions.ExecuteAction("blinkLed", actions.ActionParameters("blinkLed"));
    EXPECT_EQ(blink, std::pair(false, false));
}

TEST_F(ScannerActionsTest, BlinkLedRefusesOtherParameters) {
    EXPECT_FAILURE(actions.ExecuteAction("blinkLed", nullptr), yERROR_PARAMETER,
                   "The action 'blinkLed' needs its parameters.");
    EXPECT_FAILURE(actions.ExecuteAction("blinkLed", actions.ActionParameters("trigger")), yERROR_PARAMETER,
                   "The action 'blinkLed' needs the parameter 'ledBlinkEnabled'.");
    const auto params = actions.ActionParameters("blinkLed");
    Vor::Properties::Value<std::string> text;
    params->Register("ledLightOn", text);
    EXPECT_FAILURE(actions.ExecuteAction("blinkLed", params), yERROR_PARAMETER,
                   "The action 'blinkLed' needs the parameter 'ledLightOn'.");
    EXPECT_FALSE(blink.has_value());
}

TEST_F(ScannerActionsTest, InfoTellsTheStateOfTheScan) {
    EXPECT_EQ(Info(), nlohmann::json({{"laserEnabled", false}, {"currentEncoderValue", 0}, {"currentSyncTime", 0}}));
    state = {.scanning = true, .encoder = -7000, .time = 1'000'000};
    EXPECT_EQ(Info(),
              nlohmann::json({{"laserEnabled", true}, {"currentEncoderValue", -7000}, {"currentSyncTime", 1'024'000}}));
}

TEST_F(ScannerActionsTest, TheTimeComesBackToTheMicrosecond) {
    for (const std::uint64_t time : {1ULL, 2ULL, 41ULL, 42ULL, 124ULL, 125ULL, 126ULL, 999ULL, 1000ULL, 1001ULL,
                                     123'456'789ULL, 31'536'000'000'000ULL}) {
        state.time = time;
        const auto sent = Info()["currentSyncTime"].get<std::uint64_t>();
        EXPECT_EQ((sent * 1000) >> 10, time);
    }
}

} // namespace
} // namespace Sensor::Scan
