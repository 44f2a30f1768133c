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

/// The virtual sensor as its user starts it, with a data folder of its own.
class VirtualSensor {
public:
    static std::string File() { return BuiltFile("vorsensor"); }

    explicit VirtualSensor(std::vector<std::string> arguments = {}, const std::string& port = "0")
        : program(Command(std::move(arguments), port, data.Path().string())) {}

    /// Waits for the line that tells the state of the Modbus service, and gives it.
    std::string ServiceLine() { return program.WaitForLine("Service modbus (Modbus TCP):").value_or("none"); }

    /// Waits until the Modbus service runs; its port, 0 when it doesn't run.
    std::uint16_t WaitForPort() { return PortOf(ServiceLine()); }
    /// The same of the ASCII service, whose line comes before.
    std::uint16_t WaitForAsciiPort() {
        return PortOf(program.WaitForLine("Service ascii (e-ascii):").value_or("none"));
    }

    bool WaitForLastFrame() { return program.WaitForLine("stands still behind the last frame").has_value(); }

    Program& Process() { return program; }
    std::string DataFolder() const { return data.Path().string(); }
    std::string JobFile(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

private:
    std::uint16_t PortOf(const std::string& line) const {
        const std::string running = "Running at tcp://127.0.0.1:";
        const auto at = line.find(running);
        EXPECT_NE(at, std::string::npos) << line << program.Errors();
        return at == std::string::npos ? std::uint16_t{0}
                                       : static_cast<std::uint16_t>(std::stoi(line.substr(at + running.size())));
    }

    static std::vector<std::string> Command(std::vector<std::string> arguments, const std::string& port,
                                            const std::string& folder) {
        const bool ownPlugins = std::ranges::find(arguments, "--plugins") != arguments.end();
        arguments.insert(arguments.begin(), {File(), "--data", folder, "--modbus-port", port});
        if (!ownPlugins) {
            arguments.insert(arguments.end(), {"--set", "ascii.port=0"});
        }
        return arguments;
    }

    TempFolder data;
    Program program;
};

} // namespace Tests
