#include "Tests/Soak/SensorProgram.h"

#include "Tests/Support/BuildFolders.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Soak {

SensorProgram::SensorProgram(const std::vector<std::string>& arguments) {
    if (mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    Start(arguments);
    modbusPort = ReadPort("Service modbus (Modbus TCP): Running at tcp://127.0.0.1:");
    httpPort = ReadPort("HTTP: http://127.0.0.1:");
    reader = std::thread([this] {
        char line[1024];
        while (std::fgets(line, sizeof line, output) != nullptr) {
        }
    });
}

SensorProgram::~SensorProgram() {
    kill(process, SIGTERM);
    waitpid(process, nullptr, 0);
    reader.join();
    std::fclose(output);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void SensorProgram::Start(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {Tests::BuiltFile("vorsensor"),
                                        "--data",
                                        folder,
                                        "--modbus-port",
                                        "0",
                                        "--set",
                                        "ascii.port=0",
                                        "--http-port",
                                        "0"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<char*> words;
    for (std::string& word : command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("pipe failed");
    }
    process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execv(words[0], words.data());
        _exit(127);
    }
    close(ends[1]);
    output = fdopen(ends[0], "r");
}

std::uint16_t SensorProgram::ReadPort(const std::string& text) {
    char line[1024];
    while (std::fgets(line, sizeof line, output) != nullptr) {
        if (std::string(line).starts_with(text)) {
            return static_cast<std::uint16_t>(std::atoi(line + text.size()));
        }
    }
    throw std::runtime_error("the sensor doesn't print '" + text + "'");
}

void SensorProgram::ForgetHighest() const {
    std::ofstream("/proc/" + std::to_string(process) + "/clear_refs") << 5; // proc(5)
}

long SensorProgram::StatusKilobytes(const std::string& name) const {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) {
            return std::atol(line.c_str() + name.size());
        }
    }
    throw std::runtime_error("the sensor has ended");
}

} // namespace Soak
