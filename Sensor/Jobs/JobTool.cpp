#include "Sensor/Jobs/JobTool.h"

#include "Sensor/Jobs/JobFiles.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/PrintableText.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/ArchiveStore.h"
#include "VorCommon/PersistManager.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <system_error>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using VorCommon::ArchiveFile;

ArchiveFile::Existing ExistingOf(const JobCommand& command) {
    return command.force ? ArchiveFile::Existing::Replace : ArchiveFile::Existing::Refuse;
}

/// A hint for the user how to continue after a failure.
std::string AdviceOn(yStatus status, JobCommand::Action action) {
    switch (status) {
    case yERROR_NOT_FOUND:
        return action == JobCommand::Action::Import ? " Expected the file of a job."
                                                    : " Expected a job that jobs list prints.";
    case yERROR_ALREADY_EXISTS:
        return " Expected a new name, or --force to replace it.";
    case yERROR_FORMAT:
        return " Expected a whole job of the sensor.";
    default:
        return "";
    }
}

std::string Spaced(const std::string& text, std::size_t width) {
    return PaddedText(PrintableText(text), width) + "  ";
}

} // namespace

JobTool::JobTool(const std::filesystem::path& dataFolder, std::ostream& out)
    : folder(dataFolder / "jobs")
    , out(out) {}

void JobTool::Run(const JobCommand& command) {
    try {
        switch (command.action) {
        case JobCommand::Action::List:
            return List(command);
        case JobCommand::Action::Show:
            return Show(command);
        case JobCommand::Action::Copy:
            return Copy(command);
        case JobCommand::Action::Rename:
            return Rename(command);
        case JobCommand::Action::Delete:
            return Delete(command);
        case JobCommand::Action::Export:
            return Export(command);
        case JobCommand::Action::Import:
            return Import(command);
        case JobCommand::Action::Map:
        case JobCommand::Action::Edit:
        case JobCommand::Action::Set:
        case JobCommand::Action::Enable:
        case JobCommand::Action::Disable:
            Vor::Throw(yERROR_COMMAND, "it needs the services.");
        }
    } catch (const Vor::Exception& e) {
        throw StartError(PrintableText(command.Text() + ": " + e.what() + AdviceOn(e.Status(), command.action)));
    }
}

void JobTool::List(const JobCommand& command) {
    const std::vector<std::string> names = JobFiles(folder).Names();
    if (command.format == "json") {
        PrintJsonList(names);
    } else if (names.empty()) {
        PrintLine("No jobs in " + folder.string());
    } else {
        PrintList(names);
    }
}

void JobTool::PrintJsonList(const std::vector<std::string>& names) {
    nlohmann::json list = nlohmann::json::array();
    for (const std::string& name : names) {
        const std::string path = FileOf(name);
        std::error_code error;
        const auto size = std::filesystem::file_size(path, error);
        list.push_back({{"name", name},
                        {"file", path},
                        {"size", error ? nlohmann::json() : nlohmann::json(size)},
                        {"modified", ModificationTime(path)}});
    }
    PrintJson(list);
}

void JobTool::PrintList(const std::vector<std::string>& names) {
    std::size_t width = TextWidth("Name");
    for (const std::string& name : names) {
        width = std::max(width, TextWidth(PrintableText(name)));
    }
    constexpr std::size_t TimeWidth = 25;
    PrintLine(Spaced("Name", width) + Spaced("Modified", TimeWidth) + "Size");
    for (const std::string& name : names) {
        const std::string path = FileOf(name);
        std::error_code error;
        const auto size = std::filesystem::file_size(path, error);
        PrintLine(Spaced(name, width) + Spaced(ModificationTime(path), TimeWidth) +
                  (error ? "?" : std::to_string(size)));
    }
}

void JobTool::Show(const JobCommand& command) {
    const JobContent content = JobContent::Read(PathOf(command.name));
    if (command.format == "json") {
        PrintJson(content.ToJson());
    } else {
        PrintText(content);
    }
}

void JobTool::PrintText(const JobContent& content) {
    PrintLine("Job " + content.name + ": " + content.path + ", " + Counted(content.size, "byte") + ", modified " +
              content.modified);
    PrintLine("Entries:");
    std::size_t width = 0;
    for (const JobContent::Entry& entry : content.entries) {
        width = std::max(width, TextWidth(PrintableText(entry.name)));
    }
    for (const JobContent::Entry& entry : content.entries) {
        PrintLine("  " + Spaced(entry.name, width) + Counted(entry.size, "byte"));
    }
    for (const JobContent::Service& service : content.services) {
        const char* const state = !service.enabled   ? "not said whether enabled"
                                  : *service.enabled ? "enabled"
                                                     : "disabled";
        PrintLine("Service " + service.id + ": " + state + ", " + Counted(service.blocks, "block"));
        for (const auto& [name, value] : service.parameters.items()) {
            PrintLine("  " + name + " = " + value.dump());
        }
    }
    for (const auto& [tool, limits] : content.tools.items()) {
        PrintLine("Tool " + tool + ":");
        for (const auto& [name, value] : limits.items()) {
            PrintLine("  " + name + " = " + value.dump());
        }
    }
}

void JobTool::Copy(const JobCommand& command) {
    const std::string from = PathOf(command.name);
    const std::string to = PathOf(command.newName);
    ArchiveFile(from).CopyTo(to, ExistingOf(command));
    PrintLine("Copied to " + to);
}

void JobTool::Rename(const JobCommand& command) {
    const std::string from = PathOf(command.name);
    const std::string to = PathOf(command.newName);
    if (from == to) {
        Vor::Throw(yERROR_PARAMETER, "the job has this name already.");
    }
    ArchiveFile(from).CopyTo(to, ExistingOf(command));
    ArchiveFile(from).Remove();
    PrintLine("Renamed to " + to);
}

void JobTool::Delete(const JobCommand& command) {
    ArchiveFile file(PathOf(command.name));
    if (!file.Exists()) {
        Vor::Throw(yERROR_NOT_FOUND, "Archive '%s': there is no such file.", file.Path());
    }
    file.Remove();
    PrintLine("Deleted " + file.Path());
}

void JobTool::Export(const JobCommand& command) {
    std::error_code unknown; // then the copy fails, too
    const auto status = std::filesystem::symlink_status(command.file, unknown);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        Vor::Throw(yERROR_PARAMETER, "'%s' is not a regular file, and isn't replaced.", command.file);
    }
    ArchiveFile(PathOf(command.name)).CopyTo(command.file, ExistingOf(command));
    PrintLine("Exported to " + command.file);
}

void JobTool::Import(const JobCommand& command) {
    const std::string path = PathOf(command.NameOfImport());
    ArchiveFile(path).Make(JobFormat::Open(command.file).Files(), ExistingOf(command));
    PrintLine("Imported to " + path);
}

std::string JobTool::PathOf(const std::string& name) const {
    return (folder / VorCommon::PersistManager::JobFileName(name)).string();
}

std::string JobTool::FileOf(const std::string& name) const {
    return (folder / (name + JobFormat::Extension)).string();
}

void JobTool::PrintJson(const nlohmann::json& document) {
    out << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
}

void JobTool::PrintLine(const std::string& text) {
    out << PrintableText(text) << std::endl;
}

} // namespace Sensor::Jobs
