#pragma once

#include "Tests/EndToEnd/ModbusReader.h"
#include "Tests/EndToEnd/Program.h"
#include "Tests/Support/BuildFolders.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Tests {

/// One of three independent clients.
struct ModbusClient {
    const char* name;
    /// Empty when the server answers with an exception.
    std::function<std::vector<std::uint16_t>(std::uint16_t port, int address, int count, bool input)> read;
    /// Returns the exception code of the server's answer, 0 for none.
    std::function<int(std::uint16_t port, int address, const std::vector<std::uint16_t>& words)> write;
    /// A file that it needs to run.
    std::string requiredFile;
};

inline void PrintTo(const ModbusClient& client, std::ostream* out) {
    *out << client.name;
}

inline std::vector<std::uint16_t> ReadWithLibrary(std::uint16_t port, int address, int count, bool input) {
    return ModbusReader(port).Read(address, count, input);
}

inline int WriteWithLibrary(std::uint16_t port, int address, const std::vector<std::uint16_t>& words) {
    ModbusReader client(port);
    const int count = static_cast<int>(words.size());
    return modbus_write_registers(client.Context(), address, count, words.data()) == count ? 0 : errno - MODBUS_ENOBASE;
}

inline std::vector<std::string> MbpollCommand(std::uint16_t port, int address) {
    return {"mbpoll", "-m", "tcp", "-p", std::to_string(port), "-a", "1", "-0", "-r", std::to_string(address)};
}

inline std::vector<std::uint16_t> ReadWithMbpoll(std::uint16_t port, int address, int count, bool input) {
    std::vector<std::string> command = MbpollCommand(port, address);
    command.insert(command.end(),
                   {"-c", std::to_string(count), "-t", input ? "3:hex" : "4:hex", "-1", "-q", "127.0.0.1"});
    const Answer answer = RunToEnd(command);
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

inline int WriteWithMbpoll(std::uint16_t port, int address, const std::vector<std::uint16_t>& words) {
    std::vector<std::string> command = MbpollCommand(port, address);
    command.insert(command.end(), {"-t", "4", "127.0.0.1"});
    for (const std::uint16_t word : words) {
        command.push_back(std::to_string(word));
    }
    const Answer answer = RunToEnd(command);
    const std::string printed = answer.output + answer.errors;
    if (printed.find("Written " + std::to_string(words.size())) != std::string::npos) {
        return 0;
    }
    const std::vector<std::pair<const char*, int>> exceptions = {
        {"Illegal function", 1}, {"Illegal data address", 2}, {"Illegal data value", 3}, {"busy", 6}};
    for (const auto& [text, code] : exceptions) {
        if (printed.find(text) != std::string::npos) {
            return code;
        }
    }
    ADD_FAILURE() << printed;
    return -1;
}

/// Runs client.js, which uses a JavaScript client, and returns its answer.
inline nlohmann::json AskScript(std::uint16_t port, const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"node", SourceFile("Tests/EndToEnd/client.js"), std::to_string(port)};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Answer answer = RunToEnd(command);
    EXPECT_EQ(answer.status, 0) << answer.output << answer.errors;
    return nlohmann::json::parse(answer.output, nullptr, false);
}

inline std::vector<std::uint16_t> ReadWithScript(std::uint16_t port, int address, int count, bool input) {
    const auto document = AskScript(
        port, {"read", std::to_string(address), std::to_string(count), std::string(input ? "input" : "holding")});
    return document.is_object() && document.contains("registers")
               ? document["registers"].get<std::vector<std::uint16_t>>()
               : std::vector<std::uint16_t>();
}

inline int WriteWithScript(std::uint16_t port, int address, const std::vector<std::uint16_t>& words) {
    std::vector<std::string> arguments = {"write", std::to_string(address)};
    for (const std::uint16_t word : words) {
        arguments.push_back(std::to_string(word));
    }
    const auto document = AskScript(port, arguments);
    EXPECT_TRUE(document.is_object()) << document;
    return document.is_object() && document.contains("exception") ? document["exception"].get<int>() : 0;
}

/// A test that is run with each client.
class ModbusClientTest : public testing::TestWithParam<ModbusClient> {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(GetParam().requiredFile)) {
            GTEST_SKIP() << "there is no " << GetParam().requiredFile;
        }
    }
};

inline const auto AllModbusClients = testing::Values(
    ModbusClient{"LibModbus", ReadWithLibrary, WriteWithLibrary, "/"},
    ModbusClient{"Mbpoll", ReadWithMbpoll, WriteWithMbpoll, "/usr/bin/mbpoll"},
    ModbusClient{"ModbusSerial", ReadWithScript, WriteWithScript, SourceFile("Tests/EndToEnd/node_modules")});

inline std::string NameOfClient(const testing::TestParamInfo<ModbusClient>& info) {
    return info.param.name;
}

} // namespace Tests
