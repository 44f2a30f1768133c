#include "Sensor/Application.h"
#include "Sensor/CommandLine.h"
#include "Sensor/FolderLock.h"
#include "Sensor/Jobs/JobServiceTool.h"
#include "Sensor/Jobs/JobTool.h"
#include "Sensor/PrintableText.h"
#include "Sensor/Remote/HttpClient.h"
#include "Sensor/Remote/RemoteCommand.h"
#include "Sensor/Remote/RemoteError.h"
#include "Sensor/Remote/RemoteTool.h"
#include "Sensor/ResidentMemory.h"
#include "Sensor/StartError.h"
#include "Sensor/UserLog.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int StatusOfRefusal = 2;

void RequireWritten(const std::ostream& out) {
    if (!out) {
        throw Sensor::StartError("the output can't be written.");
    }
}

/// Notifies the user when the loaded job of a running sensor was changed.
void ReportLoadedJob(const Sensor::CommandLine& commandLine) {
    const auto owner = Sensor::FolderLock::OwnerOf(commandLine.dataFolder);
    const std::vector<std::string> changed = commandLine.jobCommand->ChangedJobs();
    if (owner && std::find(changed.begin(), changed.end(), owner->job) != changed.end()) {
        std::cerr << Sensor::PrintableText("The sensor with process id " + owner->processId + " has loaded " +
                                           owner->job + " as it was before, and continues with that.")
                  << std::endl;
    }
}

void RunJobCommand(const Sensor::CommandLine& commandLine) {
    const Sensor::Jobs::JobCommand& command = *commandLine.jobCommand;
    if (Sensor::Jobs::JobServiceTool::IsFor(command)) {
        const Sensor::UserLog log({.verbose = commandLine.verbose});
        const Sensor::UserLog::Silence silence(log);
        Sensor::Jobs::JobServiceTool tool(commandLine.dataFolder, commandLine.pluginFolders, std::cout, std::cerr);
        if (!tool.Run(command)) {
            return;
        }
    } else {
        Sensor::Jobs::JobTool(commandLine.dataFolder, std::cout).Run(command);
    }
    ReportLoadedJob(commandLine);
}

/// Returns the program's exit status.
int RunRemoteCommand(const Sensor::Remote::RemoteCommand& command) {
    using namespace Sensor::Remote;
    try {
        RemoteTool(HttpClient(ServerAddress::Parse(command.url)), std::cout).Run(command);
        RequireWritten(std::cout);
        return 0;
    } catch (const RemoteError& error) {
        std::cerr << "vorsensor: " << Sensor::PrintableText(error.what()) << '\n';
        for (const std::string& place : error.Places()) {
            std::cerr << "  " << Sensor::PrintableText(place) << '\n';
        }
        return error.ExitStatus();
    }
}

} // namespace

int main(int argc, char** argv) {
    // The sensor keeps running when the reader of its output ends.
    std::signal(SIGPIPE, SIG_IGN);
    Sensor::LimitHeaps();
    try {
        const Sensor::CommandLine commandLine = Sensor::CommandLine::Parse(argc, argv);
        if (!commandLine.answer.empty()) {
            std::cout << commandLine.answer << std::flush;
            RequireWritten(std::cout);
            return 0;
        }
        if (commandLine.jobCommand) {
            RunJobCommand(commandLine);
            RequireWritten(std::cout);
            return 0;
        }
        if (commandLine.remoteCommand) {
            return RunRemoteCommand(*commandLine.remoteCommand);
        }
        return Sensor::Application(commandLine, std::cout).Run();
    } catch (const Sensor::StartError& error) {
        std::cerr << "vorsensor: " << Sensor::PrintableText(error.what()) << std::endl;
        return StatusOfRefusal;
    } catch (const std::exception& error) {
        std::cerr << "vorsensor: " << Sensor::PrintableText(error.what()) << std::endl;
        return 1;
    }
}
