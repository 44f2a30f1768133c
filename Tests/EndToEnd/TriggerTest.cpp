// Software triggers of the started program, by clients of two services.

#include "Tests/EndToEnd/ModbusCommands.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Services/Ascii/TextClient.h"
#include "Tests/Support/Threads.h"
#include "VorCommon/ArchiveStore.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

using Services::Ascii::TextClient;

/// Sends commands with request words of its own.
class Commander : public ModbusReader {
public:
    using ModbusReader::ModbusReader;

    /// Runs a command and returns its status at the end.
    std::uint16_t Run(CommandId id, const std::string& name = "") {
        std::vector<std::uint16_t> words = {++requestWord, id};
        words.insert(words.end(), name.begin(), name.end());
        words.push_back(0);
        EXPECT_EQ(modbus_write_registers(Context(), CommandAddress, static_cast<int>(words.size()), words.data()),
                  static_cast<int>(words.size()));
        std::uint16_t status = InProgress;
        WaitUntil([&] {
            const auto answer = Read(AnswerAddress, 2);
            if (answer.size() == 2 && answer[0] == requestWord) {
                status = answer[1];
            }
            return status != InProgress;
        });
        return status;
    }

    std::uint64_t FrameIndex() { return Unsigned64(Read(StampAddress, 18), 12); }

private:
    std::uint16_t requestWord = 0;
};

/// The frame index in the answer to STAMP, as text.
std::string FrameIndex(TextClient& client) {
    const std::string answer = client.Ask("STAMP");
    return answer.substr(3, answer.find(',', 3) - 3);
}

TEST(SoftwareTrigger, EachClientReadsTheFrameOfItsOwnTrigger) {
    VirtualSensor sensor({"--trigger", "software"});
    TextClient text(sensor.WaitForAsciiPort());
    Commander registers(sensor.WaitForPort());
    std::uint64_t frame = 0;
    ASSERT_TRUE(WaitUntil([&] { return registers.Run(Trigger) == Done; })) << "the scan runs";
    for (int round = 0; round < 1000; ++round) {
        ASSERT_EQ(registers.Run(Trigger), Done);
        ASSERT_EQ(registers.FrameIndex(), ++frame);
        ASSERT_EQ(text.Ask("TRIGGER"), "OK");
        ASSERT_EQ(FrameIndex(text), std::to_string(++frame));
    }
}

TEST(SoftwareTrigger, FailsAtTheEndOfTheRecording) {
    TempFolder folder;
    const std::string recording = folder.File("two.csv");
    WriteWholeFile(recording, "frame,x,z\n0,0,1\n1,0,2\n");
    VirtualSensor sensor({"--trigger", "software", "--once", "--recording", recording});
    TextClient text(sensor.WaitForAsciiPort());
    Commander registers(sensor.WaitForPort());
    ASSERT_TRUE(WaitUntil([&] { return text.Ask("TRIGGER") == "OK"; })) << "the scan runs";
    EXPECT_EQ(registers.Run(Trigger), Done);
    EXPECT_EQ(registers.FrameIndex(), 1U) << "the last frame is read by its trigger";
    EXPECT_EQ(registers.Run(Trigger), Failed);
    EXPECT_EQ(text.Ask("TRIGGER"), "ERROR,0,\"the trigger wasn't taken; the sensor has to scan in triggered mode\"");
}

TEST(SoftwareTrigger, FailsWhenFramesComeByTime) {
    VirtualSensor sensor;
    TextClient text(sensor.WaitForAsciiPort());
    Commander registers(sensor.WaitForPort());
    EXPECT_EQ(registers.Run(Trigger), Failed);
    EXPECT_EQ(text.Ask("TRIGGER"), "ERROR,0,\"the trigger wasn't taken; the sensor has to scan in triggered mode\"");
}

// With a time-out of a minute a wait would be longer than the test.
TEST(SoftwareTrigger, DoesNotWaitInAMapOfCommandBlocksOnly) {
    VirtualSensor sensor({"--trigger", "software", "--set", "modbus.triggerTimeout=60000"});
    Commander registers(sensor.WaitForPort());
    const auto block = [](const char* type, int address) {
        return nlohmann::json{{"type", type}, {"outputId", address}};
    };
    const nlohmann::json config = {
        {"version", "1"},
        {"vor:control",
         {{"enabled", true},
          {"registerAssemblyList",
           {{{"properties", {{"id", "registerAssembly-0"}}},
             {"blocks", {block("ControlInput", CommandAddress), block("ControlOutput", AnswerAddress)}}}}},
          {"registerAssemblyVersionList", {{{"id", "registerAssembly-0"}, {"version", "1"}}}}}}};
    const std::string text = config.dump();
    VorCommon::ArchiveStore job(sensor.JobFile("commands"));
    job.Write("/controls/modbus/config.json", text.data(), text.size());
    job.Commit();
    ASSERT_EQ(registers.Run(LoadJob, "commands"), Done);
    EXPECT_TRUE(registers.Read(StampAddress, 18).empty()) << "the map has no results";
    EXPECT_TRUE(WaitUntil([&] { return registers.Run(Start) == Done; }));
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(registers.Run(Trigger), Done);
    }
}

} // namespace
} // namespace Tests
