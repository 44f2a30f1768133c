#include "Sensor/Jobs/JobMapTool.h"

#include "Sensor/Jobs/JobService.h"
#include "Sensor/Jobs/MapText.h"
#include "Sensor/Jobs/OfflineServices.h"
#include "Sensor/PrintableText.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "VorCommon/PersistManager.h"
#include "VorPlugin/PluginManager.h"
#include "yApi/yStatus.h"

namespace Sensor::Jobs {

namespace {

void Print(const MapText& map, const std::string& format, std::ostream& out) {
    if (format == "csv") {
        map.PrintCsv(out);
    } else if (format == "json") {
        map.PrintJson(out);
    } else {
        map.PrintTable(out);
    }
}

/// A hint for the user how to continue after a failure.
const char* AdviceOn(yStatus status) {
    return status == yERROR_NOT_FOUND ? " jobs list tells the jobs, jobs map what a map holds." : "";
}

} // namespace

JobMapTool::JobMapTool(const std::filesystem::path& dataFolder, std::vector<std::filesystem::path> pluginFolders,
                       std::ostream& out, std::ostream& notes)
    : folder(dataFolder / "jobs")
    , pluginFolders(std::move(pluginFolders))
    , out(out)
    , notes(notes) {}

bool JobMapTool::IsFor(const JobCommand& command) {
    return command.action == JobCommand::Action::Map || command.action == JobCommand::Action::Edit;
}

void JobMapTool::Run(const JobCommand& command) {
    try {
        const std::string path = (folder / VorCommon::PersistManager::JobFileName(command.name)).string();
        const nlohmann::json document =
            command.action == JobCommand::Action::Edit ? Vor::ParseJson(command.document) : nlohmann::json();
        VorPlugin::PluginManager plugins;
        for (const std::filesystem::path& place : pluginFolders) {
            plugins.LoadFolder(place);
        }
        OfflineServices services(plugins);
        JobService service(services, path, command.serviceId);
        for (const std::string& note : service.Notes()) {
            notes << PrintableText(note) << std::endl;
        }
        const JobService::Selection selection{.assembly = command.assembly, .outputs = command.outputs};
        if (command.action == JobCommand::Action::Edit) {
            service.Edit(selection, command.edit, document);
            service.Save();
            out << PrintableText("Edited " + path) << std::endl;
        } else {
            Print(MapText(service, selection), command.format, out);
        }
    } catch (const Vor::Exception& e) {
        throw StartError(PrintableText(command.Text() + ": " + e.what() + AdviceOn(e.Status())));
    }
}

} // namespace Sensor::Jobs
