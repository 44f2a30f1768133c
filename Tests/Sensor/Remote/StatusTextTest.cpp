#include "Sensor/Remote/StatusText.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Sensor::Remote {
namespace {

using nlohmann::json;

std::string Text(const json& sensor, const json& problems) {
    std::ostringstream out;
    PrintStatus(out, sensor, problems);
    return out.str();
}

json SensorDocument() {
    return {{"name", "vorsensor"},
            {"version", "0.1.0"},
            {"runState", "scanning"},
            {"frame", 17},
            {"alignment", "notAligned"},
            {"job", "demo.vrjob"},
            {"jobModified", false},
            {"services",
             {{{"id", "ascii"},
               {"enabled", true},
               {"status", "Running"},
               {"address", "tcp://127.0.0.1:8190"},
               {"failure", ""}},
              {{"id", "modbus"},
               {"enabled", false},
               {"status", "Stopped"},
               {"address", ""},
               {"failure", "the port 502 is taken"}}}}};
}

TEST(StatusText, IsATable) {
    EXPECT_EQ(Text(SensorDocument(), {{"items", json::array()}}),
              "vorsensor 0.1.0\n"
              "State: scanning, frame 17, notAligned\n"
              "Job:   demo.vrjob\n"
              "\n"
              "Service  Enabled  Status   Address               Failure\n"
              "ascii    yes      Running  tcp://127.0.0.1:8190\n"
              "modbus   no       Stopped                        the port 502 is taken\n"
              "\n"
              "No problems.\n");
}

TEST(StatusText, HasTheProblemsWithTheirHelp) {
    json sensor = SensorDocument();
    sensor["jobModified"] = true;
    const std::string text =
        Text(sensor,
             {{"items",
               {{{"severity", "failure"},
                 {"title", "A service failed"},
                 {"source", "/controls/modbus"},
                 {"text", "The port is taken."},
                 {"help", "Select another one."}},
                {{"severity", "warning"}, {"title", "Slow"}, {"source", ""}, {"text", "It is slow."}, {"help", ""}}}}});
    EXPECT_NE(text.find("Job:   demo.vrjob, modified: it has changes that aren't saved\n"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("\n\nfailure: A service failed (/controls/modbus)\n"
                               "  The port is taken.\n"
                               "  Select another one.\n"
                               "warning: Slow\n"
                               "  It is slow.\n"))
        << text;
}

TEST(StatusText, EscapesWhatCouldChangeTheTerminal) {
    json sensor = SensorDocument();
    sensor["job"] = "a\x1b[2J\nb";
    sensor["services"][0]["failure"] = "\u202eH\u00f6he";
    sensor["services"][1]["id"] = json::array({"\x7f"});
    const json problem = {{"severity", "x\r"}, {"title", "\t"}, {"text", "\x9b"}, {"help", "a\nb"}};
    const std::string text = Text(sensor, {{"items", json::array({problem})}});
    for (const char* escaped :
         {"a\\x1b[2J\\nb\n", "\\u202eH\u00f6he", "[\"\\x7f\"]", "x\\r: \\t\n", "\\x9b", "a\\nb"}) {
        EXPECT_NE(text.find(escaped), std::string::npos) << escaped << '\n' << text;
    }
}

TEST(StatusText, LeavesOutWhatADocumentLacks) {
    for (const json& odd : {json(), json::array({1}), json::object(), json("x"),
                            json({{"services", 1}, {"items", "x"}, {"job", nullptr}}),
                            json({{"services", {1, nullptr, json::array()}}})}) {
        EXPECT_NE(Text(odd, odd).find("Service  Enabled"), std::string::npos);
    }
}

} // namespace
} // namespace Sensor::Remote
