// Three independent clients control the started program through its registers.

#include "Tests/EndToEnd/ModbusClients.h"
#include "Tests/EndToEnd/ModbusCommands.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/Threads.h"
#include "VorCommon/ArchiveStore.h"

#include <limits>

namespace Tests {
namespace {

constexpr std::uint16_t Offset = 300; ///< offset of the measurements in the second job

enum ExceptionCode { None = 0, IllegalFunction = 1, IllegalAddress = 2, IllegalValue = 3, Busy = 6 };

/// The name of a job in command registers, one character a register.
std::vector<std::uint16_t> Characters(const std::string& text) {
    return {text.begin(), text.end()};
}

class ModbusControlTest : public ModbusClientTest {
protected:
    void Connect(VirtualSensor& sensor) { port = sensor.WaitForPort(); }

    std::vector<std::uint16_t> Read(int address, int count) {
        auto registers = GetParam().read(port, address, count, false);
        EXPECT_EQ(registers.size(), static_cast<std::size_t>(count)) << "at " << address;
        registers.resize(static_cast<std::size_t>(count));
        return registers;
    }

    int Write(int address, const std::vector<std::uint16_t>& words) { return GetParam().write(port, address, words); }

    /// Sends a command without waiting for its end. Returns the exception code.
    int Send(CommandId id, const std::vector<std::uint16_t>& arguments = {}) {
        std::vector<std::uint16_t> words = {++requestWord, id};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return Write(CommandAddress, words);
    }

    /// Waits for the end of the last command and returns its status.
    std::uint16_t WaitForStatus() {
        std::uint16_t status = InProgress;
        WaitUntil([&] {
            const auto answer = Read(AnswerAddress, 3);
            EXPECT_EQ(answer[0], requestWord) << "the echo of the command";
            status = answer[1];
            return status != InProgress;
        });
        return status;
    }

    std::uint16_t Run(CommandId id, const std::vector<std::uint16_t>& arguments = {}) {
        EXPECT_EQ(Send(id, arguments), None) << "command " << id;
        return WaitForStatus();
    }

    std::uint16_t Load(const std::string& job) {
        auto characters = Characters(job);
        characters.push_back(0);
        return Run(LoadJob, characters);
    }

    std::uint64_t FrameIndex(int stampAddress = StampAddress) { return Unsigned64(Read(stampAddress, 18), 12); }

    std::string LoadedJob() {
        const auto system = Read(SystemAddress, 40);
        return Text(system, 6, 32).substr(0, system[5]);
    }

    std::uint16_t port = 0;
    std::uint16_t requestWord = 0;
};

/// Writes a copy of the demo job with its measurements at other addresses.
void WriteMovedJob(const VirtualSensor& sensor, const std::string& name) {
    const std::string entry = "/controls/modbus/config.json";
    VorCommon::ArchiveStore demo(sensor.JobFile("demo"));
    ASSERT_TRUE(demo.Open());
    const VorCommon::PersistBuffer buffer = demo.Read(entry);
    const auto* begin = buffer.pointer + buffer.offset;
    auto config = nlohmann::json::parse(begin, begin + buffer.size);
    auto& blocks = config["vor:control"]["registerAssemblyList"][0]["blocks"];
    for (auto& block : blocks) {
        if (block["outputId"] < CommandAddress) {
            block["outputId"] = block["outputId"].get<int>() + Offset;
        }
    }
    const std::string text = config.dump();
    VorCommon::ArchiveStore moved(sensor.JobFile(name));
    moved.Write(entry, text.data(), text.size());
    moved.Commit();
}

TEST_P(ModbusControlTest, StartsTheScanSeesValuesMoveAndStopsIt) {
    VirtualSensor sensor({"--no-scan", "--frame-rate", "1000"});
    Connect(sensor);
    EXPECT_EQ(Read(AnswerAddress, 3), (std::vector<std::uint16_t>{0, 0, 0}));
    EXPECT_EQ(FrameIndex(), 0U);

    EXPECT_EQ(Run(Start), Done);
    EXPECT_TRUE(WaitUntil([&] { return Read(SystemAddress, 40)[4] == 1; })) << "the state of the run";
    const std::uint64_t first = FrameIndex();
    EXPECT_TRUE(WaitUntil([&] { return FrameIndex() > first; }));

    EXPECT_EQ(Run(Stop), Done);
    EXPECT_TRUE(WaitUntil([&] { return Read(SystemAddress, 40)[4] == 0; }));
    std::uint64_t last = FrameIndex();
    EXPECT_TRUE(WaitUntil([&] {
        const std::uint64_t former = std::exchange(last, FrameIndex());
        return former == last;
    })) << "frames on their way";
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(FrameIndex(), last);
    }
}

TEST_P(ModbusControlTest, AlignsAndClearsTheAlignment) {
    VirtualSensor sensor({"--no-scan", "--align-time", "50"});
    Connect(sensor);
    EXPECT_EQ(Run(Align), Done);
    EXPECT_TRUE(WaitUntil([&] { return Read(ScannerAddress, 10)[8] == 1; })) << "aligned";
    EXPECT_EQ(Run(Align), Done) << "again";
    EXPECT_EQ(Run(ClearAlign), Done);
    EXPECT_TRUE(WaitUntil([&] { return Read(ScannerAddress, 10)[8] == 0; })) << "not aligned";
}

TEST_P(ModbusControlTest, SeesAnAlignmentFail) {
    VirtualSensor sensor({"--no-scan", "--align", "fail", "--align-time", "50"});
    Connect(sensor);
    EXPECT_EQ(Run(Align), Failed);
    EXPECT_EQ(Run(Start), Done) << "and goes on";
}

TEST_P(ModbusControlTest, IsToldToWaitWhileACommandRuns) {
    VirtualSensor sensor({"--no-scan", "--align", "never"});
    Connect(sensor);
    ASSERT_EQ(Send(Align), None);
    const std::vector<std::uint16_t> running = {requestWord, InProgress, 0};
    EXPECT_EQ(Read(AnswerAddress, 3), running);
    EXPECT_EQ(Send(Start), Busy);
    EXPECT_EQ(Read(AnswerAddress, 3), running);
    EXPECT_EQ(Read(CommandAddress, 2), (std::vector<std::uint16_t>{running[0], Align})) << "nothing was taken";
}

TEST_P(ModbusControlTest, LoadsAnotherJobAndReadsByItsMap) {
    VirtualSensor sensor({"--frame-rate", "1000"});
    Connect(sensor);
    WriteMovedJob(sensor, "second");
    const std::vector<std::uint16_t> demo = Read(0, 15);
    EXPECT_TRUE(WaitUntil([&] { return LoadedJob() == "demo.vrjob"; }));

    EXPECT_EQ(Load("second"), Done);
    EXPECT_TRUE(WaitUntil([&] { return LoadedJob() == "second.vrjob"; }));
    const std::uint64_t first = FrameIndex(StampAddress + Offset);
    EXPECT_TRUE(WaitUntil([&] { return FrameIndex(StampAddress + Offset) > first; }));
    EXPECT_EQ(Read(Offset, 15)[2], 1U) << "a decision";
    EXPECT_EQ(Write(0, {1}), IllegalAddress) << "there is no block any more";

    EXPECT_EQ(Load("demo.vrjob"), Done);
    EXPECT_TRUE(WaitUntil([&] { return LoadedJob() == "demo.vrjob"; }));
    EXPECT_EQ(Read(0, 15).size(), demo.size());
}

TEST_P(ModbusControlTest, KeepsTheJobWhenAnotherIsMissingOrDamaged) {
    VirtualSensor sensor({"--frame-rate", "1000"});
    Connect(sensor);
    WriteWholeFile(sensor.JobFile("damaged"), std::string(5000, 'x'));
    EXPECT_EQ(Load("nowhere"), Failed);
    EXPECT_EQ(Load("damaged"), Failed);
    EXPECT_EQ(Load("../demo"), Failed);
    EXPECT_EQ(Load(""), Failed);
    EXPECT_TRUE(WaitUntil([&] { return LoadedJob() == "demo.vrjob"; }));
    const std::uint64_t first = FrameIndex();
    EXPECT_TRUE(WaitUntil([&] { return FrameIndex() > first; })) << "the scan goes on";
    const std::string log = sensor.Process().Errors();
    EXPECT_NE(log.find(sensor.JobFile("nowhere")), std::string::npos) << log;
    EXPECT_NE(log.find(sensor.JobFile("damaged")), std::string::npos) << log;
}

TEST_P(ModbusControlTest, TriggersSingleFrames) {
    VirtualSensor sensor({"--trigger", "software"});
    Connect(sensor);
    const auto text = [&] { return Text(Read(TextAddress, 16), 0, 16); };
    EXPECT_EQ(text(), "");
    for (std::uint64_t frame = 0; frame < 3; ++frame) {
        EXPECT_EQ(Run(Trigger), Done);
        EXPECT_TRUE(text().starts_with("frame " + std::to_string(frame) + ":")) << text();
        EXPECT_EQ(FrameIndex(), frame);
    }
    EXPECT_EQ(Run(Stop), Done);
    EXPECT_EQ(Run(Trigger), Failed) << "nothing scans";
}

TEST_P(ModbusControlTest, CantTriggerWhileFramesComeByTime) {
    VirtualSensor sensor;
    Connect(sensor);
    EXPECT_EQ(Run(Trigger), Failed);
}

TEST_P(ModbusControlTest, SendsUserDataAndAnInvalidCommand) {
    VirtualSensor sensor({"--no-scan"});
    Connect(sensor);
    EXPECT_EQ(Run(UserData, {0x1234, 0x5678}), Done);
    EXPECT_EQ(Run(Invalid), Failed);
    EXPECT_EQ(Run(UserData, {0xFFFF}), Done);
}

TEST_P(ModbusControlTest, WritesNowhereElse) {
    VirtualSensor sensor({"--no-scan"});
    Connect(sensor);
    const auto before = Read(0, 56);
    EXPECT_EQ(Write(0, {1, 2}), IllegalAddress);
    EXPECT_EQ(Write(AnswerAddress, {1, 2}), IllegalAddress);
    EXPECT_EQ(Write(CommandAddress + 64, {1, 2}), IllegalAddress) << "beyond the end of the input";
    EXPECT_EQ(Write(5000, {1, 2}), IllegalAddress);
    EXPECT_EQ(Read(0, 56), before);
    EXPECT_EQ(Read(CommandAddress, 65), std::vector<std::uint16_t>(65, 0));
}

TEST_P(ModbusControlTest, MayOnlyReadFromWhereItMayNotWrite) {
    VirtualSensor sensor({"--no-scan", "--set", "modbus.writeNetworks=[\"10.0.0.0/8\"]"});
    Connect(sensor);
    EXPECT_EQ(Send(Start), IllegalFunction);
    EXPECT_EQ(Read(AnswerAddress, 3), (std::vector<std::uint16_t>{0, 0, 0}));
}

INSTANTIATE_TEST_SUITE_P(Of, ModbusControlTest, AllModbusClients, NameOfClient);

/// Tests that don't depend on the client.
class ControlledSensorTest : public ModbusControlTest {};

TEST_P(ControlledSensorTest, KeepsTheConnectionWhenAJobIsLoaded) {
    VirtualSensor sensor({"--frame-rate", "1000"});
    Connect(sensor);
    WriteMovedJob(sensor, "second");
    ModbusReader other(port);
    ASSERT_EQ(other.Read(0, 15).size(), 15U);
    EXPECT_EQ(Load("second"), Done);
    EXPECT_EQ(other.Read(Offset, 15).size(), 15U) << "over the same connection";
}

TEST_P(ControlledSensorTest, TakesARequestWordOnceWhoeverWritesIt) {
    VirtualSensor sensor({"--no-scan"});
    Connect(sensor);
    EXPECT_EQ(Run(Start), Done);
    EXPECT_EQ(Write(CommandAddress, {requestWord, Invalid}), None) << "a second client with the same word";
    EXPECT_EQ(Read(AnswerAddress, 3), (std::vector<std::uint16_t>{requestWord, Done, 0}));
    EXPECT_TRUE(WaitUntil([&] { return FrameIndex() > 0; }));
}

TEST_P(ControlledSensorTest, RunsTheExampleOfTheDocumentation) {
    if (!std::filesystem::exists(SourceFile("Tests/EndToEnd/node_modules"))) {
        GTEST_SKIP() << "there is no client for JavaScript";
    }
    VirtualSensor sensor({"--no-scan", "--align", "fail"});
    Connect(sensor);
    const auto example = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(),
                         {"env", "NODE_PATH=" + SourceFile("Tests/EndToEnd/node_modules"), "node",
                          SourceFile("Docs/examples/modbus-command.js"), "127.0.0.1", std::to_string(port)});
        return RunToEnd(arguments);
    };
    const Answer started = example({"start"});
    EXPECT_EQ(started.status, 0) << started.output << started.errors;
    EXPECT_TRUE(WaitUntil([&] { return FrameIndex() > 0; }));
    EXPECT_EQ(example({"stop"}).status, 0);
    EXPECT_EQ(example({"align"}).status, 1);
    EXPECT_EQ(example({"load-job", "demo"}).status, 0);
    EXPECT_EQ(example({"load-job", "nowhere"}).status, 1);
    EXPECT_EQ(example({"user-data", "abc"}).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Of, ControlledSensorTest,
                         testing::Values(ModbusClient{"LibModbus", ReadWithLibrary, WriteWithLibrary, "/"}),
                         NameOfClient);

} // namespace
} // namespace Tests
