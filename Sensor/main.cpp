#include "Sensor/Application.h"
#include "Sensor/CommandLine.h"
#include "Sensor/Jobs/JobServiceTool.h"
#include "Sensor/Jobs/JobTool.h"
#include "Sensor/StartError.h"
#include "Sensor/UserLog.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

constexpr int StatusOfRefusal = 2;

void RunJobCommand(const Sensor::CommandLine& commandLine) {
    const Sensor::Jobs::JobCommand& command = *commandLine.jobCommand;
    if (Sensor::Jobs::JobServiceTool::IsFor(command)) {
        const Sensor::UserLog log({.verbose = commandLine.verbose});
        const Sensor::UserLog::Silence silence(log);
        Sensor::Jobs::JobServiceTool(commandLine.dataFolder, commandLine.pluginFolders, std::cout, std::cerr)
            .Run(command);
    } else {
        Sensor::Jobs::JobTool(commandLine.dataFolder, std::cout).Run(command);
    }
}

} // namespace

int main(int argc, char** argv) {
    // The sensor keeps running when the reader of its output ends.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        const Sensor::CommandLine commandLine = Sensor::CommandLine::Parse(argc, argv);
        if (!commandLine.answer.empty()) {
            std::cout << commandLine.answer << std::flush;
            return 0;
        }
        if (commandLine.jobCommand) {
            RunJobCommand(commandLine);
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
