// Three independent clients read the measurements of real recordings from the started program.

#include "Tests/EndToEnd/ModbusClients.h"

#include "Tests/EndToEnd/LastFrame.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/Threads.h"

namespace Tests {
namespace {

constexpr int MeasurementRegisters = 3;

/// A measurement in the registers of a client.
struct Measured {
    std::int64_t value;
    std::int64_t decision;

    bool operator==(const Measured&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Measured& measured) {
        return out << measured.value << "/" << measured.decision;
    }
};

class ModbusClientsTest : public ModbusClientTest {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(RecordingFile("sweeps.csv"))) {
            GTEST_SKIP() << "there is no folder of recordings beside the sources";
        }
        ModbusClientTest::SetUp();
    }

    /// Waits until the sensor has published the last frame, and returns its port.
    std::uint16_t WaitForEnd(VirtualSensor& sensor) {
        const std::uint16_t port = sensor.WaitForPort();
        EXPECT_TRUE(sensor.WaitForLastFrame()) << sensor.Process().Errors();
        return port;
    }

    /// The first `count` measurements of the map. Waits until they are as expected: the last frame may still be
    /// processed by the service's thread.
    std::vector<Measured> ReadMeasurements(std::uint16_t port, int count, const std::vector<Measured>& expected) {
        std::vector<Measured> measured;
        WaitUntil([&] {
            measured.clear();
            const auto registers = GetParam().read(port, 0, count * MeasurementRegisters, false);
            for (std::size_t at = 0; at + 2 < registers.size(); at += MeasurementRegisters) {
                measured.push_back({Signed32(registers, at), registers[at + 2]});
            }
            return measured == expected;
        });
        return measured;
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
    const std::uint16_t port = WaitForEnd(sensor);
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
    EXPECT_EQ(ReadMeasurements(WaitForEnd(sensor), 5, expected), expected);
}

TEST_P(ModbusClientsTest, ReadsTheLastDiameter) {
    VirtualSensor sensor({"--recording", RecordingFile("diameters.csv"), "--once", "--frame-rate", "200"});
    const std::vector<Measured> expected = {{123, 1}};
    EXPECT_EQ(ReadMeasurements(WaitForEnd(sensor), 1, expected), expected);
}

INSTANTIATE_TEST_SUITE_P(Of, ModbusClientsTest, AllModbusClients, NameOfClient);

TEST(ModbusIdentification, IsReadByAnIndependentClient) {
    if (!std::filesystem::exists(SourceFile("Tests/EndToEnd/node_modules"))) {
        GTEST_SKIP() << "modbus-serial isn't installed";
    }
    VirtualSensor sensor({"--no-scan", "--set", "modbus.writeNetworks=[]"});
    const std::uint16_t port = sensor.WaitForPort();
    EXPECT_EQ(AskScript(port, {"identify", "1", "0"}),
              nlohmann::json::parse(R"({"objects":{"0":"vorsensor","1":"virtual sensor","2":")" VOR_VERSION
                                    R"("},"conformity":129})"));
    EXPECT_EQ(AskScript(port, {"identify", "4", "1"})["objects"]["1"], "virtual sensor");
    EXPECT_EQ(AskScript(port, {"identify", "4", "5"})["exception"], 2);
    EXPECT_EQ(AskScript(port, {"identify", "5", "0"})["exception"], 3);
}

} // namespace
} // namespace Tests
