// The Modbus service of the started program, with the generated part as input.

#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Support/BuildFolders.h"
#include "Tests/Support/TcpClient.h"

#include <nlohmann/json.hpp>

namespace Tests {
namespace {

/// A client that can send incomplete requests.
class RawClient : public TcpClient {
public:
    using TcpClient::SendSomeOf;
    using TcpClient::TcpClient;
};

TEST(ModbusService, EndsWellOnEachSignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        VirtualSensor sensor;
        ASSERT_NE(sensor.WaitForPort(), 0);
        ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
        ExpectEndWell(sensor.Process(), signal);
    }
}

TEST(ModbusService, EndsWellWithClientsThatMisbehave) {
    VirtualSensor sensor({"--frame-rate", "1000"});
    const std::uint16_t port = sensor.WaitForPort();
    const unsigned char request[] = {0, 1, 0, 0, 0, 6, 1, 3, 0, 0, 0, 56};
    const RawClient silent(port);
    EXPECT_TRUE(silent.Connected());
    RawClient half(port);
    EXPECT_EQ(half.SendSomeOf(request, 7), 7u);
    RawClient deaf(port);
    for (int refusals = 0; refusals < 10;) {
        refusals += deaf.SendSomeOf(request, sizeof request) == 0 ? 1 : 0;
    }
    ModbusReader reader(port);
    EXPECT_EQ(reader.Read(0, 56).size(), 56u) << "the others are served";
    ExpectEndWell(sensor.Process());
}

TEST(ModbusService, ShowsOneFrameInEachRequest) {
    VirtualSensor sensor({"--frame-rate", "2000"});
    ModbusReader reader(sensor.WaitForPort());
    std::uint64_t last = 0;
    int changes = 0;
    const auto end = std::chrono::steady_clock::now() + Program::Deadline;
    while (changes < 300 && std::chrono::steady_clock::now() < end) {
        const auto registers = reader.Read(0, TextAddress + 16);
        ASSERT_EQ(registers.size(), static_cast<std::size_t>(TextAddress + 16));
        const std::string text = Text(registers, TextAddress, 16);
        if (text.empty()) {
            continue; // no frame yet
        }
        const std::uint64_t frame = Unsigned64(registers, StampAddress + 12);
        ASSERT_EQ(text.substr(0, text.find(':')), "frame " + std::to_string(frame));
        ASSERT_EQ(Unsigned64(registers, StampAddress + 4), frame * 1000) << "the encoder";
        char height[32];
        std::snprintf(height, sizeof height, "max %.3f mm", static_cast<double>(Signed32(registers, 0)) / 1000);
        ASSERT_EQ(text.substr(text.find("max")), height);
        changes += frame != last ? 1 : 0;
        last = frame;
    }
    EXPECT_EQ(changes, 300);
}

TEST(ModbusService, AnswersRequestsThatItCannotServeWithExceptions) {
    VirtualSensor sensor;
    ModbusReader reader(sensor.WaitForPort());
    EXPECT_EQ(reader.Read(15, 1).size(), 0u);
    EXPECT_EQ(errno, EMBXILADD) << "no block at this address";
    EXPECT_EQ(reader.Read(14, 3).size(), 3u) << "a gap between blocks reads as 0";
    EXPECT_EQ(reader.Read(15, 2).at(0), 0u);
    EXPECT_EQ(modbus_write_register(reader.Context(), 0, 1), -1);
    EXPECT_EQ(errno, EMBXILADD) << "a measurement can't be written";
    EXPECT_EQ(modbus_write_bit(reader.Context(), 0, 1), -1);
    EXPECT_EQ(errno, EMBXILFUN);
    unsigned char bit = 0;
    EXPECT_EQ(modbus_read_bits(reader.Context(), 0, 1, &bit), -1);
    EXPECT_EQ(errno, EMBXILFUN);
    EXPECT_EQ(reader.Read(0, 3).size(), 3u);
}

TEST(ModbusService, SaysThatItsPortIsInUseAndTheSensorGoesOn) {
    VirtualSensor first;
    const std::uint16_t port = first.WaitForPort();
    VirtualSensor second({}, std::to_string(port));
    EXPECT_EQ(second.ServiceLine(),
              "Service modbus (Modbus TCP): Failed To Start: port " + std::to_string(port) + " on 127.0.0.1 is in use");
    EXPECT_TRUE(second.Process().WaitForLine("Scanning."));
    ModbusReader reader(port);
    EXPECT_EQ(reader.Read(0, 3).size(), 3u);
    ExpectEndWell(second.Process());
    ExpectEndWell(first.Process());
}

TEST(ModbusService, TakesItsParametersFromTheCommandLine) {
    VirtualSensor sensor({"--set", "modbus.byteOrder=1", "--set", "modbus.unitId=7"});
    ModbusReader reader(sensor.WaitForPort());
    modbus_set_slave(reader.Context(), 7);
    EXPECT_EQ(reader.Read(0, 3).size(), 3u);
    modbus_set_slave(reader.Context(), 8);
    EXPECT_EQ(reader.Read(0, 3).size(), 0u);
    EXPECT_EQ(errno, EMBXGTAR);
}

TEST(ModbusService, HasItsMapInTheJobWhichAnyToolCanList) {
    if (RunToEnd({"sqlite3", "--version"}).status != 0) {
        GTEST_SKIP() << "there is no sqlite3";
    }
    VirtualSensor sensor;
    ASSERT_NE(sensor.WaitForPort(), 0);
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const Answer list = RunToEnd({"sqlite3", sensor.JobFile("demo"), "-A", "--list"});
    EXPECT_EQ(list.status, 0) << list.errors;
    EXPECT_NE(("\n" + list.output).find("\ncontrols/modbus/config.json\n"), std::string::npos) << list.output;

    const TempFolder folder;
    const Answer extracted =
        RunToEnd({"sqlite3", sensor.JobFile("demo"), "-A", "--extract", "--directory", folder.Path().string()});
    EXPECT_EQ(extracted.status, 0) << extracted.errors;
    const auto config = nlohmann::json::parse(ReadWholeFile(folder.File("controls/modbus/config.json")));
    const auto& assembly = config["vor:control"]["registerAssemblyList"].at(0);
    EXPECT_EQ(assembly["properties"]["id"], "registerAssembly-0");
    std::vector<std::string> map;
    for (const auto& block : assembly["blocks"]) {
        const auto dataSource = block.value("dataSource", "");
        map.push_back(std::to_string(block["outputId"].get<int>()) + " " + block["type"].get<std::string>() +
                      (dataSource.empty() ? "" : " " + dataSource));
    }
    EXPECT_EQ(map, (std::vector<std::string>{"0 Measurement profile/max", "3 Measurement profile/min",
                                             "6 Measurement profile/mean", "9 Measurement profile/width",
                                             "12 Measurement profile/points", "16 Stamp profile/stamp",
                                             "40 String profile/text", "1000 ControlInput", "1100 ControlOutput",
                                             "1200 System", "1300 Scanner", "1400 Diagnostics"}));
    ExpectEndWell(sensor.Process());
}

TEST(ModbusService, IsLeftAloneByPlugInsThatMisbehave) {
    const std::filesystem::path fixtures = BuiltFile("test-plugins");
    if (!std::filesystem::exists(fixtures)) {
        GTEST_SKIP() << "there is no " << fixtures;
    }
    const TempFolder folder;
    std::filesystem::copy(BuiltFile("plugins/modbus.so"), folder.Path());
    std::filesystem::copy(BuiltFile("plugins/modbus.demo.json"), folder.Path());
    for (const auto& file : std::filesystem::directory_iterator(fixtures)) {
        std::filesystem::copy(file.path(), folder.Path());
    }
    WriteWholeFile(folder.File("text.so"), "This is no library.\n");
    VirtualSensor sensor({"--plugins", folder.Path().string()});
    const std::uint16_t port = sensor.WaitForPort();
    ASSERT_NE(port, 0);
    EXPECT_NE(sensor.Process().Output().find("text.so is refused: "), std::string::npos) << sensor.Process().Output();
    ModbusReader reader(port);
    EXPECT_EQ(reader.Read(0, 15).size(), 15u);
    ExpectEndWell(sensor.Process());
}

} // namespace
} // namespace Tests
