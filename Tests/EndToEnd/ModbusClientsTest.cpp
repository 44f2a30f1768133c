// Three independent clients read what the started program measures of real recordings.

#include "Tests/EndToEnd/LastFrame.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"

#include <functional>
#include <nlohmann/json.hpp>

namespace Tests {
namespace {

constexpr int MeasurementRegisters = 3;
constexpr int StampAddress = 16;
constexpr int TextAddress = 40;

/// A value of several registers and its decision, as a client reads them at an address.
struct Measured {
    std::int64_t value;
    std::int64_t decision;

    bool operator==(const Measured&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Measured& measured) {
        return out << measured.value << "/" << measured.decision;
    }
};

using Reader = std::function<std::vector<std::uint16_t>(std::uint16_t port, int address, int count, bool input)>;

std::vector<std::uint16_t> ReadWithLibrary(std::uint16_t port, int address, int count, bool input) {
    return ModbusReader(port).Read(address, count, input);
}

std::vector<std::uint16_t> ReadWithMbpoll(std::uint16_t port, int address, int count, bool input) {
    const Answer answer =
        RunToEnd({"mbpoll", "-m", "tcp", "-p", std::to_string(port), "-a", "1", "-0", "-r", std::to_string(address),
                  "-c", std::to_string(count), "-t", input ? "3:hex" : "4:hex", "-1", "-q", "127.0.0.1"});
    EXPECT_EQ(answer.status, 0) << answer.output << answer.errors;
    std::vector<std::uint16_t> registers;
    std::istringstream lines(answer.output);
    for (std::string line; std::getline(lines, line);) {
        if (const auto at = line.find("0x"); !line.empty() && line[0] == '[' && at != std::string::npos) {
            registers.push_back(static_cast<std::uint16_t>(std::stoul(line.substr(at), nullptr, 16)));
        }
    }
    return registers;
}

std::vector<std::uint16_t> ReadWithScript(std::uint16_t port, int address, int count, bool input) {
    const Answer answer = RunToEnd({"node", VOR_SOURCE_DIR "/Tests/EndToEnd/read.js", std::to_string(port),
                                    std::to_string(address), std::to_string(count), input ? "input" : "holding"});
    EXPECT_EQ(answer.status, 0) << answer.output << answer.errors;
    const auto document = nlohmann::json::parse(answer.output, nullptr, false);
    return document.is_object() && document.contains("registers")
               ? document["registers"].get<std::vector<std::uint16_t>>()
               : std::vector<std::uint16_t>();
}

struct Client {
    const char* name;
    Reader read;
    const char* needs;
};

class ModbusClientsTest : public testing::TestWithParam<Client> {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(RecordingFile("sweeps.csv"))) {
            GTEST_SKIP() << "there is no folder of recordings beside the sources";
        }
        if (!std::filesystem::exists(GetParam().needs)) {
            GTEST_SKIP() << "there is no " << GetParam().needs;
        }
    }

    /// Starts the sensor and waits until it stands still behind the last frame.
    std::uint16_t Play(VirtualSensor& sensor) {
        const std::uint16_t port = sensor.WaitForPort();
        EXPECT_TRUE(sensor.WaitForLastFrame()) << sensor.Process().Errors();
        return port;
    }

    /// The measurement at an address once it is there: the frame is on its way through the service's thread.
    std::vector<Measured> ReadMeasurements(std::uint16_t port, int count, const std::vector<Measured>& expected) {
        const auto end = std::chrono::steady_clock::now() + Program::Deadline;
        for (;;) {
            std::vector<Measured> measured;
            const auto registers = GetParam().read(port, 0, count * MeasurementRegisters, false);
            for (std::size_t at = 0; at + 2 < registers.size(); at += MeasurementRegisters) {
                measured.push_back({Signed32(registers, at), registers[at + 2]});
            }
            if (measured == expected || std::chrono::steady_clock::now() > end) {
                return measured;
            }
        }
    }
};

std::vector<Measured> Expected(const LastFrame& frame) {
    std::vector<Measured> expected;
    for (const std::int64_t value : frame.Values()) {
        expected.push_back({value, value == INT32_MIN ? 2 : 1});
    }
    return expected;
}

TEST_P(ModbusClientsTest, ReadsTheLastOfManySweeps) {
    const std::string file = RecordingFile("sweeps.csv");
    const LastFrame frame(file);
    VirtualSensor sensor({"--recording", file, "--once", "--frame-rate", "200"});
    const std::uint16_t port = Play(sensor);
    EXPECT_EQ(ReadMeasurements(port, 5, Expected(frame)), Expected(frame));

    const auto stamp = GetParam().read(port, StampAddress, 18, true);
    ASSERT_EQ(stamp.size(), 18u);
    EXPECT_EQ(Unsigned64(stamp, 0), 0u);
    EXPECT_EQ(Unsigned64(stamp, 4), static_cast<std::uint64_t>(frame.index) * 1000) << "the encoder";
    EXPECT_EQ(Unsigned64(stamp, 12), static_cast<std::uint64_t>(frame.index));
    const auto text = GetParam().read(port, TextAddress, 16, true);
    ASSERT_EQ(text.size(), 16u);
    char expected[64];
    std::snprintf(expected, sizeof expected, "frame %d: max %.3f mm", static_cast<int>(frame.index),
                  static_cast<double>(frame.max) / 1000);
    EXPECT_EQ(Text(text, 0, 16), std::string(expected).substr(0, 32));
}

TEST_P(ModbusClientsTest, ReadsTheOneProfileOfTwoBoxes) {
    const std::string file = RecordingFile("boxes.csv");
    VirtualSensor sensor({"--recording", file, "--once", "--frame-rate", "200"});
    const auto expected = Expected(LastFrame(file));
    EXPECT_EQ(ReadMeasurements(Play(sensor), 5, expected), expected);
}

TEST_P(ModbusClientsTest, ReadsTheLastDiameter) {
    VirtualSensor sensor({"--recording", RecordingFile("diameters.csv"), "--once", "--frame-rate", "200"});
    const std::vector<Measured> expected = {{123, 1}};
    EXPECT_EQ(ReadMeasurements(Play(sensor), 1, expected), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ModbusClientsTest,
    testing::Values(Client{"LibModbus", ReadWithLibrary, "/"}, Client{"Mbpoll", ReadWithMbpoll, "/usr/bin/mbpoll"},
                    Client{"ModbusSerial", ReadWithScript, VOR_SOURCE_DIR "/Tests/EndToEnd/node_modules"}),
    [](const testing::TestParamInfo<Client>& info) { return info.param.name; });

} // namespace
} // namespace Tests
