#include "Sensor/Io/PortParams.h"

#include "Tests/Support/Failure.h"
#include "Vor/JsonSerializer.h"
#include "VorCommon/IDigitalOutputProvider.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Io {
namespace {

using nlohmann::json;

TEST(PortParams, HaveTheDefaultSettings) {
    EXPECT_EQ(PortParams().Settings(), PortSettings());
    EXPECT_EQ(Vor::Properties::JsonSerializer::Serialize(PortParams()), (json{{"name", ""},
                                                                              {"behaviour", 3},
                                                                              {"activeLow", false},
                                                                              {"mode", "level"},
                                                                              {"pulseWidth", 10'000},
                                                                              {"delay", 0},
                                                                              {"schedule", "now"},
                                                                              {"idle", "off"}}));
    EXPECT_EQ(static_cast<int>(PortBehaviour::SoftwareEvents), VorCommon::IDigitalOutputProvider::SoftwareEvents);
}

TEST(PortParams, TellTheirOptionsUnitsAndLimits) {
    PortParams params;
    EXPECT_EQ(params.behaviour.OptionTexts(), (std::vector<std::string>{"Unused", "On While the Sensor Scans",
                                                                        "A Pulse with Each Frame", "Software Events"}));
    EXPECT_EQ(params.mode.Options(), (std::vector<std::string>{"level", "pulse"}));
    EXPECT_EQ(params.schedule.Options(), (std::vector<std::string>{"now", "encoder", "time"}));
    EXPECT_EQ(params.idle.Options(), (std::vector<std::string>{"off", "on", "keep"}));
    for (const Vor::Params::Value<unsigned int>* time : {&params.pulseWidth, &params.delay}) {
        EXPECT_EQ(time->GetUnits(), "us");
        EXPECT_EQ(time->GetMaximum(), 10'000'000U);
    }
    EXPECT_EQ(params.pulseWidth.GetMinimum(), 100U);
    EXPECT_EQ(params.delay.GetMinimum(), 0U);
}

TEST(PortParams, ANameIsPlainText) {
    PortParams params;
    for (const char* name : {"", "Reject gate", "Grüße"}) {
        params.name.CheckValidation(name, false);
    }
    params.name.CheckValidation(std::string(64, 'x'), false);
    for (const std::string& name : {std::string(65, 'x'), std::string("a\tb"), std::string("\x7F"), std::string("\xFF"),
                                    std::string("a\0b", 3)}) {
        EXPECT_FAILURE(params.name.CheckValidation(name, false), yERROR_PARAMETER,
                       "Name must be at most 64 bytes of text in UTF-8 without control characters.");
    }
}

} // namespace
} // namespace Sensor::Io
