// What the started program logs, whatever its clients send and however few files it can open.

#include "Tests/EndToEnd/HttpClient.h"
#include "Tests/EndToEnd/ModbusCommands.h"
#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/VirtualSensor.h"
#include "Tests/Net/LineClient.h"
#include "Tests/Support/Threads.h"
#include "Vor/Utf8.h"

#include <filesystem>
#include <iomanip>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace Tests {
namespace {

/// What a client sends that wants to forge an entry, to erase a terminal, and to turn the text after it.
const std::string Attack = "forged\n2026-01-31T23:59:59.999Z error: no laser\r\x1b[2J\x07";
const std::string AttackInUtf8 = "forged\xc2\x9b[2J\xe2\x80\xae\xe2\x80\xa8no-laser";
const std::string TurnedText = "turned\xe2\x80\xae\xe2\x80\xa8no-laser";

/// Expects that each line is an entry or belongs to a back trace, and contains nothing that a terminal obeys.
void ExpectWholeLines(const std::string& log) {
    static const std::regex Entry(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z (info|warning|error)(: | \[).*)");
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(line.starts_with("    #") || std::regex_match(line, Entry)) << line;
        EXPECT_TRUE(Vor::IsUtf8(line)) << line;
        for (const char* forbidden : {"\x1b", "\r", "\x07", "\xc2\x9b", "\xe2\x80\xae", "\xe2\x80\xa8"}) {
            EXPECT_EQ(line.find(forbidden), std::string::npos) << line;
        }
    }
}

/// Runs a command of the demo map with these bytes as its arguments, and waits for its end.
void RunWithModbus(ModbusReader& client, std::uint16_t request, std::uint16_t command, const std::string& bytes) {
    std::vector<std::uint16_t> words{request, command};
    for (const char byte : bytes) {
        words.push_back(static_cast<unsigned char>(byte));
    }
    words.resize(65);
    ASSERT_EQ(modbus_write_registers(client.Context(), CommandAddress, static_cast<int>(words.size()), words.data()),
              static_cast<int>(words.size()));
    EXPECT_TRUE(WaitUntil([&] {
        const auto answer = client.Read(AnswerAddress, 2);
        return answer.size() == 2 && answer[0] == request && answer[1] != InProgress;
    })) << command;
}

std::string PercentCoded(const std::string& text) {
    std::ostringstream coded;
    coded << std::hex << std::setfill('0');
    for (const unsigned char byte : text) {
        coded << '%' << std::setw(2) << static_cast<unsigned>(byte);
    }
    return coded.str();
}

/// Sends the text wherever a request has one.
void SendWithHttp(const HttpClient& http, const std::string& text) {
    using Json = nlohmann::json;
    const Json block = {{"type", "Measurement"}, {"dataSource", text}, {"displayName", text}};
    const Json unknown = {{"type", text}, {"dataSource", text}};
    const Json output = {{"outputId", text}, {"source", text}};
    const std::string assembly = "/controls/modbus/assemblies/registerAssembly-0/commands/";
    for (const auto& [path, arguments] : std::vector<std::pair<std::string, Json>>{
             {"/sensor/jobs/" + PercentCoded(text) + "/commands/load", nullptr},
             {"/sensor/jobs/demo/commands/copy", {{"name", text}}},
             {"/sensor/jobs/demo/commands/" + PercentCoded(text), nullptr},
             {assembly + "add", {{"blocks", Json::array({block, unknown})}}},
             {"/controls/ascii/outputs/commands/addAll", {{"map", Json::array({output, output})}}},
             {"/controls/ascii/outputs/commands/remove", {{"map", Json::array({output})}}}}) {
        EXPECT_NE(http.Ask("POST", path, arguments).status, 0) << path;
    }
    EXPECT_EQ(http.Ask("PATCH", "/controls/modbus", {{"parameters", {{"address", text}}}}).status, 422);
}

TEST(Log, CannotBeForgedWithAnyTextOfAClient) {
    const TempFolder folder;
    VirtualSensor sensor({"--log-file", folder.File("log")});
    const std::uint16_t asciiPort = sensor.WaitForAsciiPort();
    const std::uint16_t modbusPort = sensor.WaitForPort();
    ModbusReader modbus(modbusPort);
    std::uint16_t request = 0;
    for (std::uint16_t command = 0; command <= 12; ++command) {
        for (const std::string& bytes :
             {Attack, AttackInUtf8, TurnedText, std::string("\xff\x9b\xc0\x8a"), std::string(63, 'x')}) {
            RunWithModbus(modbus, ++request, command, bytes);
        }
    }
    Net::LineClient ascii(asciiPort);
    for (const std::string command : {"", "START ", "STOP ", "ALIGN ", "CLEARALIGN ", "TRIGGER ", "LOADJOB ",
                                      "USERDATA ", "RESULT ", "PUSH ON ", "PUSH ", "STATE ", "HELP ", "VERSION "}) {
        for (const std::string& text :
             {AttackInUtf8, TurnedText, std::string("\x1b[2J"), std::string("\xff\xff\x9b"), std::string(1900, 'x')}) {
            EXPECT_NE(ascii.Ask(command + text), "") << command;
        }
    }
    const HttpClient http = HttpClient::Of(sensor);
    for (const std::string& text : {Attack, AttackInUtf8, TurnedText, std::string(1900, 'x')}) {
        SendWithHttp(http, text);
    }
    ExpectEndWell(sensor.Process());
    const std::string record = ReadWholeFile(folder.File("log"));
    ExpectWholeLines(record);
    ExpectWholeLines(sensor.Process().Errors());
    EXPECT_NE(record.find("forged\\u009b[2J\\u202e\\u2028no-laser"), std::string::npos);
    EXPECT_NE(record.find("turned\\u202e\\u2028no-laser.vrjob"), std::string::npos);
    const std::string whole = "forged\\n2026-01-31T23:59:59.999Z error: no laser\\r\\x1b[2J\\x07";
    EXPECT_NE(record.find("Error adding data source <" + whole + ">"), std::string::npos);
    EXPECT_NE(record.find('"' + whole + "\" is not an IP address"), std::string::npos);
}

TEST(Log, TellsUsersNothingOfWhatIsHealthy) {
    VirtualSensor sensor;
    const std::uint16_t asciiPort = sensor.WaitForAsciiPort();
    ModbusReader modbus(sensor.WaitForPort());
    Net::LineClient ascii(asciiPort);
    const HttpClient http = HttpClient::Of(sensor);
    std::uint16_t request = 0;
    for (int round = 0; round < 2; ++round) {
        for (const std::uint16_t command : {Stop, Start, Align, ClearAlign, UserData}) {
            RunWithModbus(modbus, ++request, command, "");
        }
        RunWithModbus(modbus, ++request, LoadJob, "demo");
        for (const char* line : {"STOP", "START", "ALIGN", "CLEARALIGN", "LOADJOB demo"}) {
            EXPECT_EQ(ascii.Ask(line), "OK\r") << line;
            EXPECT_EQ(ascii.Ask("STATE").substr(0, 3), "OK,");
            EXPECT_EQ(ascii.Ask("JOB"), "OK,\"demo.vrjob\"\r");
        }
        EXPECT_EQ(http.Ask("POST", "/sensor/jobs/demo/commands/load").status, 200);
    }
    ExpectEndWell(sensor.Process());
    EXPECT_EQ(sensor.Process().Errors(), "");
}

TEST(Log, RecordsEachClientAndIsOpenedAnewAtAHangUp) {
    const TempFolder folder;
    const std::string file = folder.File("log");
    VirtualSensor sensor({"--log-file", file});
    const std::uint16_t port = sensor.WaitForPort();
    const auto contains = [](const std::string& path, const std::string& text) {
        return WaitUntil(
            [&] { return std::filesystem::exists(path) && ReadWholeFile(path).find(text) != std::string::npos; });
    };
    { ModbusReader client(port); }
    EXPECT_TRUE(contains(file, " has left: it has closed the connection\n"));
    std::filesystem::rename(file, file + ".1");
    sensor.Process().Signal(SIGHUP);
    EXPECT_TRUE(WaitUntil([&] { return std::filesystem::exists(file); }));
    {
        Net::LineClient client(port);
        client.Send("GET / HTTP/1.1\r\n\r\n");
        EXPECT_TRUE(client.WaitForClose());
    }
    EXPECT_TRUE(contains(file, "[ModbusNet] Net::TcpConnection::Start: Client 127.0.0.1:"));
    EXPECT_TRUE(contains(file, " has left: it sent what isn't Modbus TCP\n"));
    EXPECT_EQ(ReadWholeFile(file + ".1").find("isn't Modbus TCP"), std::string::npos);
    ExpectEndWell(sensor.Process());
    EXPECT_EQ(sensor.Process().Errors(), "");
}

TEST(Log, SurvivesAHangUpWithoutAFile) {
    VirtualSensor sensor;
    const std::uint16_t port = sensor.WaitForPort();
    sensor.Process().Signal(SIGHUP);
    EXPECT_EQ(ModbusReader(port).Read(0, 2).size(), 2U);
    ExpectEndWell(sensor.Process());
}

TEST(Log, SaysThatDescriptorsHaveRunOutAndTheOpenConnectionsGoOn) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "UBSan, which is on with ASan, needs descriptors to find out whether memory can be read";
#endif
    const TempFolder folder;
    VirtualSensor sensor({"--log-file", folder.File("log")});
    const std::uint16_t port = sensor.WaitForPort();
    ModbusReader served(port);
    ASSERT_EQ(served.Read(0, 2).size(), 2U);
    ASSERT_TRUE(sensor.Process().WaitForLine("Scanning."));
    const auto openFiles =
        std::filesystem::directory_iterator("/proc/" + std::to_string(sensor.Process().Id()) + "/fd");
    rlimit limit{};
    ASSERT_EQ(prlimit(sensor.Process().Id(), RLIMIT_NOFILE, nullptr, &limit), 0);
    limit.rlim_cur = static_cast<rlim_t>(std::distance(begin(openFiles), end(openFiles))) + 2;
    ASSERT_EQ(prlimit(sensor.Process().Id(), RLIMIT_NOFILE, &limit, nullptr), 0);

    const std::string failure =
        " error: Clients can't connect to 127.0.0.1:" + std::to_string(port) + ": Too many open files.\n";
    const std::string success = " info: Clients can connect to 127.0.0.1:" + std::to_string(port) + " again.\n";
    const auto said = [&](const std::string& text) {
        return sensor.Process().Errors().find(text) != std::string::npos;
    };
    std::vector<std::unique_ptr<TcpClient>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<TcpClient>(port));
    }
    EXPECT_TRUE(WaitUntil([&] { return said(failure); })) << sensor.Process().Errors();
    EXPECT_EQ(served.Read(0, 2).size(), 2U);
    clients.clear();
    EXPECT_TRUE(WaitUntil([&] { return said(success); })) << sensor.Process().Errors();
    EXPECT_EQ(ModbusReader(port).Read(0, 2).size(), 2U);
    ExpectEndWell(sensor.Process());
    const std::string errors = sensor.Process().Errors();
    EXPECT_EQ(errors.find(failure), errors.rfind(failure)) << errors;
}

} // namespace
} // namespace Tests
