#pragma once

#include "Tests/EndToEnd/Program.h"

#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>

namespace Tests {

inline std::string RecordingFile(const std::string& name) {
    return std::string(VOR_SOURCE_DIR "/../shared/recordings/") + name;
}

/// The virtual sensor as its user starts it, with a data folder of its own.
class VirtualSensor {
public:
    static constexpr const char* File = VOR_BINARY_DIR "/vorsensor";

    explicit VirtualSensor(std::vector<std::string> arguments = {}, const std::string& port = "0")
        : program(Command(std::move(arguments), port, data.Path().string())) {}

    /// Waits for the line that tells the service's state, and gives it.
    std::string ServiceLine() { return program.WaitForLine("Service modbus (Modbus TCP):").value_or("none"); }

    /// Waits until the service runs; its port, 0 when it doesn't run.
    std::uint16_t WaitForPort() {
        const std::string line = ServiceLine();
        const std::string running = "Running at tcp://127.0.0.1:";
        const auto at = line.find(running);
        EXPECT_NE(at, std::string::npos) << line << program.Errors();
        return at == std::string::npos ? std::uint16_t{0}
                                       : static_cast<std::uint16_t>(std::stoi(line.substr(at + running.size())));
    }

    bool WaitForLastFrame() { return program.WaitForLine("stands still behind the last frame").has_value(); }

    Program& Process() { return program; }
    std::string JobFile(const std::string& name) const { return data.File("jobs/" + name + ".vrjob"); }

private:
    static std::vector<std::string> Command(std::vector<std::string> arguments, const std::string& port,
                                            const std::string& folder) {
        arguments.insert(arguments.begin(), {File, "--data", folder, "--modbus-port", port});
        return arguments;
    }

    TempFolder data;
    Program program;
};

} // namespace Tests
