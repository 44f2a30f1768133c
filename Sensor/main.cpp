#include "Sensor/Application.h"
#include "Sensor/CommandLine.h"
#include "Sensor/Jobs/JobTool.h"
#include "Sensor/StartError.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

constexpr int StatusOfRefusal = 2;

} // namespace

int main(int argc, char** argv) {
    // Whoever reads the output may go, and the sensor goes on.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const Sensor::CommandLine commandLine = Sensor::CommandLine::Parse(argc, argv);
        if (!commandLine.answer.empty()) {
            std::cout << commandLine.answer << std::flush;
            return 0;
        }
        if (commandLine.jobCommand) {
            Sensor::Jobs::JobTool(commandLine.dataFolder, std::cout).Run(*commandLine.jobCommand);
            return 0;
        }
        return Sensor::Application(commandLine, std::cout).Run();
    } catch (const Sensor::StartError& error) {
        std::cerr << "vorsensor: " << error.what() << std::endl;
        return StatusOfRefusal;
    } catch (const std::exception& error) {
        std::cerr << "vorsensor: " << error.what() << std::endl;
        return 1;
    }
}
