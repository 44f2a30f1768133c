#include "Sensor/Jobs/DemoJobs.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/JobService.h"
#include "Sensor/Jobs/KnownKeys.h"
#include "Sensor/Jobs/OfflineServices.h"
#include "Sensor/Jobs/ServiceSetting.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/JsonSerializer.h"
#include "Vor/JsonText.h"
#include "VorCommon/ArchiveStore.h"
#include "VorPlugin/PluginManager.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;

constexpr const char* RepeatKey = "forEachValue";
constexpr const char* NameText = "{value}";

std::vector<std::filesystem::path> FilesOf(const VorPlugin::PluginManager& plugins) {
    std::vector<std::filesystem::path> files;
    for (std::size_t i = 0; i < plugins.Count(); ++i) {
        const auto file = std::filesystem::path(plugins.At(i).Path()).replace_extension(".demo.json");
        if (std::filesystem::exists(file)) {
            files.push_back(file);
        }
    }
    return files;
}

std::string TextOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

std::string WithName(std::string text, const std::string& name) {
    for (auto at = text.find(NameText); at != std::string::npos; at = text.find(NameText, at + name.size())) {
        text.replace(at, std::string_view(NameText).size(), name);
    }
    return text;
}

/// The document with the name of a value in its texts.
json Named(const json& document, const std::string& name) {
    if (document.is_string()) {
        return WithName(document.get<std::string>(), name);
    }
    json named = document;
    for (json& element : named) {
        if (element.is_string() || element.is_structured()) {
            element = Named(element, name);
        }
    }
    return named;
}

/// The document with its repeated objects.
json Expanded(const json& document, const std::vector<std::string>& names) {
    if (!document.is_structured()) {
        return document;
    }
    json expanded = document.is_array() ? json::array() : json::object();
    if (document.is_object()) {
        for (const auto& [key, value] : document.items()) {
            expanded[key] = Expanded(value, names);
        }
        return expanded;
    }
    for (const json& element : document) {
        if (!element.is_object() || !element.contains(RepeatKey)) {
            expanded.push_back(Expanded(element, names));
            continue;
        }
        json repeated = element;
        repeated.erase(RepeatKey);
        const std::size_t count = std::min(names.size(), element.at(RepeatKey).get<std::size_t>());
        for (std::size_t i = 0; i < count; ++i) {
            expanded.push_back(Named(repeated, names[i]));
        }
    }
    return expanded;
}

void RequireObject(const json& value, const std::string& place) {
    if (!value.is_object()) {
        Vor::Throw(yERROR_FORMAT, "%s: expected an object but got %s.", place, value.type_name());
    }
}

} // namespace

bool DemoJobs::Has(const std::string& job) {
    const std::string name = JobFormat::JobNameOf(job);
    return name == Demo || name == DemoValues;
}

std::string DemoJobs::JobFor(const Scan::Recording& recording) {
    return recording.kind == Scan::RecordingKind::Values ? DemoValues : Demo;
}

DemoJobs::DemoJobs(VorPlugin::PluginManager& plugins, const Scan::Recording& recording) {
    jobs[Demo];
    if (recording.kind == Scan::RecordingKind::Values) {
        jobs[DemoValues];
    }
    if (FilesOf(plugins).empty()) {
        return;
    }
    OfflineServices services(plugins); // may leave plug-ins out
    for (const std::filesystem::path& file : FilesOf(plugins)) {
        try {
            Add(services, file, recording);
        } catch (const std::exception& e) {
            throw StartError(file.string() + ": " + e.what());
        }
    }
}

void DemoJobs::Add(OfflineServices& services, const std::filesystem::path& file, const Scan::Recording& recording) {
    const json document = Expanded(Vor::ParseJson(TextOf(file)), recording.names);
    RequireObject(document, "the document");
    for (const auto& [serviceId, contents] : document.items()) {
        RequireObject(contents, serviceId);
        for (const auto& [job, content] : contents.items()) {
            RequireObject(content, std::string(serviceId).append(".").append(job));
            if (jobs.contains(job)) {
                Add(services, serviceId, content, job);
            }
        }
    }
}

// The job of a store that is never committed.
void DemoJobs::Add(OfflineServices& services, const std::string& serviceId, const json& content,
                   const std::string& job) {
    VorCommon::ArchiveStore store("");
    JobService service(services, store, serviceId, JobService::Missing::UseDefaults);
    service.Enable(content.value("enabled", false));
    const json parameters = content.value("parameters", json::object());
    RequireKnownKeys(parameters, Vor::Properties::JsonSerializer::Serialize(*service.Instance().Params()));
    SetParameters(service.Instance(), parameters);
    for (const json& step : content.value("commands", json::array())) {
        service.Edit({.outputs = step.value("outputs", false)}, step.at("command").get<std::string>(),
                     step.value("document", json::object()));
    }
    service.Save();
    jobs.at(job).merge(store.Files());
}

void DemoJobs::Write(const std::string& job, const std::string& filePath) const {
    try {
        VorCommon::ArchiveStore store(filePath);
        Fill(job, store);
        store.Commit();
    } catch (const Vor::Exception& e) {
        throw StartError(filePath + ": the job can't be written (" + e.what() + ").");
    }
}

void DemoJobs::Fill(const std::string& job, VorCommon::IPersistStore& store) const {
    const auto found = jobs.find(JobFormat::JobNameOf(job));
    if (found == jobs.end()) {
        throw StartError(
            "--job " + job +
            ": doesn't exist yet and is made from a recording of named values; give one with --recording FILE.");
    }
    for (const auto& [name, content] : found->second) {
        store.Write("/" + name, content->data(), content->size());
    }
}

} // namespace Sensor::Jobs
