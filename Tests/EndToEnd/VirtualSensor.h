#pragma once

#include "Tests/EndToEnd/Program.h"
#include "Tests/Support/BuildFolders.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>

#include <gtest/gtest.h>

namespace Tests {

/// Addresses of the demo job.
inline constexpr int StampAddress = 16;
inline constexpr int TextAddress = 40;

inline std::string RecordingFile(const std::string& name) {
    return (RecordingsFolder() / name).string();
}

/// The virtual sensor, started with a data folder of its own.
class VirtualSensor {
public:
    static std::string File() { return BuiltFile("vorsensor"); }

    /// The program with a data folder and arguments. Without an option about HTTP it serves that on any free port.
    static std::vector<std::string> Command(const std::string& folder, std::vector<std::string> arguments) {
        const auto has = [&](const char* word) { return std::ranges::find(arguments, word) != arguments.end(); };
        if (!has("jobs") && !has("--http-port") && !has("--no-http")) {
            arguments.insert(arguments.begin(), {"--http-port", "0"});
        }
        arguments.insert(arguments.begin(), {File(), "--data", folder});
        return arguments;
    }

    explicit VirtualSensor(std::vector<std::string> arguments = {}, const std::string& port = "0")
        : program(Command(data.Path().string(), WithPorts(std::move(arguments), port))) {}

    /// Waits for the line with the state of the Modbus service.
    std::string ServiceLine() { return program.WaitForLine("Service modbus (Modbus TCP):").value_or("none"); }

    /// Waits until the Modbus service runs and returns its port; 0 when it doesn't run.
    std::uint16_t WaitForPort() { return PortOf(ServiceLine(), program); }
    /// The same for the ASCII service, whose line is printed before.
    std::uint16_t WaitForAsciiPort() {
        return PortOf(program.WaitForLine("Service ascii (e-ascii):").value_or("none"), program);
    }
    /// The port in the line of a service; 0 when the service doesn't run.
    static std::uint16_t PortOf(const std::string& line, const Program& sensor) {
        const std::string running = "Running at tcp://127.0.0.1:";
        const auto at = line.find(running);
        EXPECT_NE(at, std::string::npos) << line << sensor.Errors();
        return at == std::string::npos ? std::uint16_t{0}
                                       : static_cast<std::uint16_t>(std::stoi(line.substr(at + running.size())));
    }

    bool WaitForLastFrame() { return program.WaitForLine("stands still behind the last frame").has_value(); }

    Program& Process() { return program; }
    std::string DataFolder() const { return data.Path().string(); }
    std::string JobFile(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

private:
    static std::vector<std::string> WithPorts(std::vector<std::string> arguments, const std::string& port) {
        const bool ownPlugins = std::ranges::find(arguments, "--plugins") != arguments.end();
        arguments.insert(arguments.begin(), {"--modbus-port", port});
        if (!ownPlugins) {
            arguments.insert(arguments.end(), {"--set", "ascii.port=0"});
        }
        return arguments;
    }

    TempFolder data;
    Program program;
};

} // namespace Tests
