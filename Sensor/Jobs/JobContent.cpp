#include "Sensor/Jobs/JobContent.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/ToolsEntry.h"
#include "VorCommon/ArchiveStore.h"
#include "VorControl/Persistence/PersistFields.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;
using namespace VorControl::Persistence;

/// The member, or null when there is none.
json MemberOf(const json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found == object.end() ? json() : *found;
}

std::size_t BlockCount(const json& assemblies) {
    std::size_t count = 0;
    if (assemblies.is_array()) {
        for (const json& assembly : assemblies) {
            const json blocks = MemberOf(assembly, PERSISTENCE_FIELD_NAME_BLOCKS);
            count += blocks.is_array() ? blocks.size() : 0;
        }
    }
    return count;
}

JobContent::Service Described(const std::string& serviceId, const json& document) {
    const json section = MemberOf(document, JobFormat::SectionKey);
    const json enabled = MemberOf(section, JobFormat::EnabledKey);
    return {.id = serviceId,
            .enabled = enabled.is_boolean() ? std::optional<bool>(enabled.get<bool>()) : std::nullopt,
            .parameters = MemberOf(section, PERSISTENCE_FIELD_NAME_PARAMETERS),
            .blocks = BlockCount(MemberOf(section, PERSISTENCE_FIELD_NAME_REGISTER_ASSEMBLY_LIST))};
}

} // namespace

JobContent JobContent::Read(const std::string& path) {
    VorCommon::ArchiveStore store(path);
    store.OpenJob();
    JobContent content;
    content.name = JobFormat::JobNameOf(std::filesystem::path(path).filename().string());
    content.path = path;
    std::error_code error;
    content.size = std::filesystem::file_size(path, error);
    content.modified = ModificationTime(path);
    for (const auto& [name, bytes] : store.Files()) {
        content.entries.push_back({name, bytes->size()});
        if (const std::string serviceId = JobFormat::ServiceOf(name); !serviceId.empty()) {
            content.services.push_back(Described(serviceId, JobFormat::Read(store, JobFormat::PathOf(serviceId))));
        }
    }
    if (store.Exists(ToolsEntry::Path)) {
        content.tools = MemberOf(JobFormat::Read(store, ToolsEntry::Path), ToolsEntry::ToolsKey);
    }
    return content;
}

nlohmann::json JobContent::ToJson() const {
    json entryList = json::array();
    for (const Entry& entry : entries) {
        entryList.push_back({{"name", entry.name}, {"size", entry.size}});
    }
    json serviceMap = json::object();
    for (const Service& service : services) {
        serviceMap[service.id] = {{"enabled", service.enabled ? json(*service.enabled) : json()},
                                  {"parameters", service.parameters},
                                  {"blocks", service.blocks}};
    }
    return {{"name", name},         {"file", path},           {"size", size},  {"modified", modified},
            {"entries", entryList}, {"services", serviceMap}, {"tools", tools}};
}

std::string ModificationTime(const std::string& path) {
    struct stat status {};
    std::tm local{};
    std::array<char, 32> buffer{};
    if (stat(path.c_str(), &status) != 0 || localtime_r(&status.st_mtime, &local) == nullptr) {
        return {};
    }
    std::string text(buffer.data(), std::strftime(buffer.data(), buffer.size(), "%Y-%m-%dT%H:%M:%S%z", &local));
    return text.insert(text.size() - 2, ":"); // the zone's minutes
}

} // namespace Sensor::Jobs
