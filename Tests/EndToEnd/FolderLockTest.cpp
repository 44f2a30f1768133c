// Programs that work on one data folder at the same time.

#include "Tests/EndToEnd/VirtualSensor.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {
namespace {

class DataFolder : public testing::Test {
protected:
    std::vector<std::string> Command(std::vector<std::string> arguments) const {
        return VirtualSensor::Command(data.Path().string(), std::move(arguments));
    }
    std::vector<std::string> Sensor() const { return Command({"--modbus-port", "0", "--set", "ascii.port=0"}); }

    TempFolder data;
};

TEST_F(DataFolder, BelongsToOneSensorUntilThatHasEnded) {
    Program first(Sensor());
    ASSERT_TRUE(first.WaitForLine("Scanning.")) << first.Errors();
    const std::string job = ReadWholeFile(data.File("jobs/demo.vrjob"));
    const Answer second = RunToEnd(Sensor());
    EXPECT_EQ(second.status, 2) << second.output;
    EXPECT_EQ(second.errors, "vorsensor: --data " + data.Path().string() + ": the sensor with process id " +
                                 std::to_string(first.Id()) +
                                 " uses this folder. Expected a folder of this sensor's own.\n");
    EXPECT_EQ(ReadWholeFile(data.File("jobs/demo.vrjob")), job);
    first.Signal(SIGKILL);
    EXPECT_EQ(first.WaitForExit(), 128 + SIGKILL);

    Program third(Sensor());
    EXPECT_TRUE(third.WaitForLine("Scanning.")) << third.Errors();
    ExpectEndWell(third);
}

TEST_F(DataFolder, MayBeWorkedOnByJobCommandsWhichNameALoadedJob) {
    Program sensor(Sensor());
    ASSERT_TRUE(sensor.WaitForLine("Scanning.")) << sensor.Errors();
    const std::string note = "The sensor with process id " + std::to_string(sensor.Id()) +
                             " has loaded demo.vrjob as it was before, and continues with that.\n";
    const std::vector<std::pair<std::vector<std::string>, std::string>> commands = {
        {{"jobs", "copy", "demo", "second"}, ""},
        {{"jobs", "set", "second", "modbus.unitId=7"}, ""},
        {{"jobs", "show", "demo"}, ""},
        {{"jobs", "map", "demo", "modbus"}, ""},
        {{"jobs", "export", "demo", data.File("exported")}, ""},
        {{"jobs", "set", "demo", "modbus.unitId=7"}, note},
        {{"jobs", "disable", "demo", "ascii"}, note},
        {{"jobs", "edit", "demo", "modbus", "removeAll"}, note},
        {{"jobs", "edit", "demo", "modbus", "removeAll"}, ""},
        {{"jobs", "import", data.File("exported"), "demo", "--force"}, note},
        {{"jobs", "copy", "second", "demo.vrjob", "--force"}, note},
        {{"jobs", "rename", "demo", "third"}, note},
        {{"jobs", "rename", "third", "demo"}, note},
        {{"jobs", "delete", "demo"}, note}};
    for (const auto& [command, expected] : commands) {
        const Answer answer = RunToEnd(Command(command));
        EXPECT_EQ(answer.status, 0) << command[1];
        EXPECT_EQ(answer.errors, expected) << command[1];
    }
    ExpectEndWell(sensor);
    EXPECT_EQ(RunToEnd(Command({"jobs", "set", "second", "modbus.unitId=8"})).errors, "");
}

} // namespace
} // namespace Tests
