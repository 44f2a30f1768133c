#include "Sensor/Jobs/JobServiceTool.h"

#include "Sensor/Jobs/JobService.h"
#include "Sensor/Jobs/ListedNames.h"
#include "Sensor/Jobs/MapText.h"
#include "Sensor/Jobs/OfflineServices.h"
#include "Sensor/Jobs/ServiceSetting.h"
#include "Sensor/Jobs/ToolSettings.h"
#include "Sensor/PrintableText.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "Vor/MainLoop.h"
#include "VorCommon/ArchiveStore.h"
#include "VorCommon/PersistManager.h"
#include "VorPlugin/PluginManager.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <map>
#include <utility>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using Action = JobCommand::Action;

JobService::Selection SelectionOf(const JobCommand& command) {
    return {.assembly = command.assembly, .outputs = command.outputs};
}

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
    return status == yERROR_NOT_FOUND ? " jobs list prints the jobs, jobs map the content of a map." : "";
}

} // namespace

JobServiceTool::JobServiceTool(const std::filesystem::path& dataFolder,
                               std::vector<std::filesystem::path> pluginFolders, std::ostream& out, std::ostream& notes)
    : folder(dataFolder / "jobs")
    , pluginFolders(std::move(pluginFolders))
    , out(out)
    , notes(notes) {}

bool JobServiceTool::IsFor(const JobCommand& command) {
    switch (command.action) {
    case Action::Map:
    case Action::Edit:
    case Action::Set:
    case Action::Enable:
    case Action::Disable:
        return true;
    default:
        return false;
    }
}

bool JobServiceTool::Run(const JobCommand& command) {
    try {
        const std::string path = (folder / VorCommon::PersistManager::JobFileName(command.name)).string();
        Vor::MainLoop loop(Vor::MainLoop::Mode::Manual);
        VorPlugin::PluginManager plugins;
        for (const std::filesystem::path& place : pluginFolders) {
            plugins.LoadFolder(place);
        }
        OfflineServices services(plugins);
        VorCommon::ArchiveStore store(path);
        store.OpenJob();
        if (command.action == Action::Map) {
            PrintMap(services, store, command);
            return false;
        }
        const std::string done = Change(services, store, command);
        if (done.empty()) {
            out << PrintableText("Nothing was changed in " + path) << std::endl;
            return false;
        }
        store.Commit();
        out << PrintableText(done + " " + path) << std::endl;
        return true;
    } catch (const Vor::Exception& e) {
        throw StartError(PrintableText(command.Text() + ": " + e.what() + AdviceOn(e.Status())));
    }
}

void JobServiceTool::PrintMap(OfflineServices& services, VorCommon::ArchiveStore& store, const JobCommand& command) {
    JobService service(services, store, command.serviceId, JobService::Missing::Refuse);
    Load(service);
    Print(MapText(service, SelectionOf(command)), command.format, out);
}

std::string JobServiceTool::Change(OfflineServices& services, VorCommon::ArchiveStore& store,
                                   const JobCommand& command) {
    if (command.action == Action::Set) {
        Set(services, store, command);
        return "Changed";
    }
    const nlohmann::json document = Vor::ParseJson(command.document);
    JobService service(services, store, command.serviceId, JobService::Missing::UseDefaults);
    if (command.action == Action::Edit) {
        Load(service);
        const std::set<std::string> before = service.DataSources();
        if (!service.Edit(SelectionOf(command), command.edit, document)) {
            return "";
        }
        WarnOfNewSources(before, service.DataSources());
        service.Save();
        return "Edited";
    }
    const bool on = command.action == Action::Enable;
    service.Enable(on);
    service.Save();
    return std::string(on ? "Enabled " : "Disabled ") + command.serviceId + " in";
}

void JobServiceTool::WarnOfNewSources(const std::set<std::string>& before, const std::set<std::string>& after) {
    const std::vector<std::string> known = Scan::ResultSetMaker::DataSources({});
    for (const std::string& source : after) {
        if (!before.contains(source) && !source.starts_with("values/") &&
            std::find(known.begin(), known.end(), source) == known.end()) {
            notes << PrintableText("Warning: no input has the data source '" + source + "'. Profiles have " +
                                   Listed(known) + "; recordings of named values have values/NAME.")
                  << std::endl;
        }
    }
}

void JobServiceTool::Set(OfflineServices& services, VorCommon::ArchiveStore& store, const JobCommand& command) {
    std::map<std::string, JobService> changed;
    ToolSettings tools(command.Text());
    for (const std::string& text : command.settings) {
        if (ToolSettings::Has(text)) {
            tools.Add(text);
            continue;
        }
        const ServiceSetting setting = ServiceSetting::Parse(text, command.Text());
        auto found = changed.find(setting.serviceId);
        if (found == changed.end()) {
            found = changed
                        .try_emplace(setting.serviceId, services, store, setting.serviceId,
                                     JobService::Missing::UseDefaults)
                        .first;
            Load(found->second);
        }
        found->second.Set(setting);
    }
    for (auto& [serviceId, service] : changed) {
        service.Save();
    }
    tools.Apply(store);
}

void JobServiceTool::Load(JobService& service) {
    service.Load();
    for (const std::string& note : service.Notes()) {
        notes << PrintableText(note) << std::endl;
    }
}

} // namespace Sensor::Jobs
