// Maps that are edited in a job's file, and what the clients of a running sensor read then.

#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Services/Ascii/TextClient.h"
#include "Tests/Support/Threads.h"

namespace Tests {
namespace {

using Services::Ascii::TextClient;

/// The answer of the ASCII service with the measurement in the registers and, once more, its value.
std::string AsResult(const std::vector<std::uint16_t>& registers) {
    if (registers.size() < 3) {
        return modbus_strerror(errno);
    }
    const double millimetres = static_cast<double>(Signed32(registers, 0)) / 1000;
    char text[64];
    std::snprintf(text, sizeof text, "OK,%.3f,%d,%.3f", millimetres, registers[2], millimetres);
    return text;
}

class EditedJobTest : public testing::Test {
protected:
    Answer Jobs(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {VirtualSensor::File(), "--data", sensor.DataFolder(), "jobs"});
        return RunToEnd(arguments);
    }

    void Edit(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "edit");
        const Answer answer = Jobs(arguments);
        EXPECT_EQ(answer.status, 0) << answer.errors;
    }

    VirtualSensor sensor;
};

TEST_F(EditedJobTest, IsReadByClientsAtItsNewAddressesAndIds) {
    TextClient text(sensor.WaitForAsciiPort());
    ModbusReader registers(sensor.WaitForPort());
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    ASSERT_EQ(Jobs({"copy", "demo", "edited"}).status, 0);
    Edit({"edited", "modbus", "update", R"({"outputId": 0, "newParams": {"outputId": 500}})"});
    Edit({"edited", "modbus", "remove", R"({"outputIdList": [{"outputId": 3}]})"});
    Edit({"edited", "modbus", "add",
          R"({"blocks": [{"type": "MeasurementValue", "dataSource": "profile/points", "outputId": 600}]})"});
    Edit({"edited", "ascii", "update", R"({"outputId": 0, "newParams": {"outputId": 9}})"});
    Edit({"edited", "ascii", "updateId", R"({"map": [{"outputId": "height"}, {"outputId": "peak"}]})", "--outputs"});

    EXPECT_EQ(text.Ask("RESULT 9"), "ERROR,-999,\"there is no output 9\"") << "the loaded job isn't the edited one";
    ASSERT_EQ(text.Ask("LOADJOB edited"), "OK");
    ASSERT_EQ(text.Ask("STOP"), "OK");
    ASSERT_EQ(text.Ask("START"), "OK") << "frames come by the new map";
    const std::string none = "OK,INVALID,INVALID,INVALID";
    ASSERT_TRUE(WaitUntil([&] { return text.Ask("RESULT 9 peak") != none; }));
    ASSERT_EQ(text.Ask("STOP"), "OK");

    const auto agree = [&] { return text.Ask("RESULT 9 peak") == AsResult(registers.Read(500, 3)); };
    EXPECT_TRUE(WaitUntil(agree)) << "both services tell of the last frame";
    const auto points = registers.Read(600, 2);
    ASSERT_EQ(points.size(), 2u) << modbus_strerror(errno);
    EXPECT_GT(Signed32(points, 0), 0);
    EXPECT_EQ(registers.Read(0, 6).size(), 0u);
    EXPECT_EQ(errno, EMBXILADD) << "one block was moved, one was removed";
    EXPECT_EQ(registers.Read(6, 3).size(), 3u) << "the others stay";
    EXPECT_EQ(text.Ask("RESULT height"), "ERROR,-999,\"there is no output height\"");

    EXPECT_EQ(text.Ask("LOADJOB demo"), "OK");
    EXPECT_EQ(text.Ask("RESULT 9"), "ERROR,-999,\"there is no output 9\"");
    EXPECT_EQ(registers.Read(0, 6).size(), 6u) << "the former job is as it was";
}

TEST_F(EditedJobTest, IsAsItWasWhenAnEditFails) {
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const std::string before = ReadWholeFile(sensor.JobFile("demo"));
    const Answer answer = Jobs({"edit", "demo", "modbus", "update", R"({"outputId": 7})"});
    EXPECT_EQ(answer.status, 2);
    EXPECT_NE(
        answer.errors.find("Unable to update te connection map because there are no data sources with output id 7."),
        std::string::npos)
        << answer.errors;
    const Answer taken =
        Jobs({"edit", "demo", "ascii", "add", R"({"outputId": "peak", "source": "profile/max"})", "--outputs"});
    EXPECT_EQ(taken.status, 2);
    EXPECT_EQ(taken.errors, "vorsensor: jobs edit demo ascii add: Data source profile/max already exists.\n");
    EXPECT_EQ(ReadWholeFile(sensor.JobFile("demo")), before);
}

TEST_F(EditedJobTest, HoldsSettingsAndAServiceOfAnotherFolderForGood) {
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const std::string examples = BuiltFile("examples");
    const std::vector<std::vector<std::string>> commands = {
        {"copy", "demo", "mine"},
        {"set", "mine", "modbus.unitId=9", "modbus.port=0", "ascii.port=0"},
        {"--plugins", examples, "edit", "mine", "sample", "add",
         R"({"blocks": [{"type": "MeasurementValue", "dataSource": "profile/max"}]})"},
        {"--plugins", examples, "enable", "mine", "sample"},
        {"rename", "mine", "ours"}};
    for (const auto& command : commands) {
        const Answer answer = Jobs(command);
        ASSERT_EQ(answer.status, 0) << answer.errors;
    }
    ExpectEndWell(sensor.Process());
    Program other(VirtualSensor::Command(sensor.DataFolder(),
                                         {"--job", "ours", "--plugins", BuiltFile("plugins"), "--plugins", examples}));
    EXPECT_TRUE(other.WaitForLine("Service sample (Sample): Running")) << other.Output() << other.Errors();
    EXPECT_TRUE(other.WaitForLine("Map of sample, registerAssembly-0:"));
    EXPECT_TRUE(other.WaitForLine("profile/max"));
    ExpectEndWell(other);
    EXPECT_NE(Jobs({"show", "ours"}).output.find("unitId = 9\n"), std::string::npos);
    EXPECT_EQ(Jobs({"delete", "ours"}).status, 0);
    EXPECT_EQ(Jobs({"show", "ours"}).status, 2);
}

} // namespace
} // namespace Tests
