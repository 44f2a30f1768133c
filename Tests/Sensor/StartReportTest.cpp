#include "Sensor/StartReport.h"

#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/RecordingParser.h"

#include <sstream>

#include <gtest/gtest.h>

namespace Sensor {
namespace {

TEST(StartReport, TellsTheInput) {
    std::ostringstream out;
    StartReport report(out);
    report.PrintInput("generated part", Scan::GeneratePart(), {});
    report.PrintInput("v.csv", Scan::RecordingParser::Parse("frame,name,value\n0,a,1\n1,a,2\n1,b,2\n", "v.csv"),
                      {.frameRate = 0.5, .once = true});
    report.PrintInput("generated part", Scan::GeneratePart(), {.trigger = Scan::TriggerMode::Software});
    report.PrintInput("one.csv", Scan::RecordingParser::Parse("frame,x,z\n0,1,2\n", "one.csv"), {.frameRate = 1});
    EXPECT_EQ(out.str(), "Input: generated part, 120 frames, 19320 points, 10 frames a second, over and over\n"
                         "Input: v.csv, 2 frames, 3 values, 0.5 frames a second, once\n"
                         "Input: generated part, 120 frames, 19320 points, a frame a trigger, over and over\n"
                         "Input: one.csv, 1 frame, 1 point, 1 frame a second, over and over\n");
}

TEST(StartReport, PrintsNoControlCharacters) {
    std::ostringstream out;
    StartReport(out).PrintLine("a\x1b[31m\nb\x7f Öl");
    EXPECT_EQ(out.str(), "a\\x1b[31m\\nb\\x7f Öl\n");
}

} // namespace
} // namespace Sensor
