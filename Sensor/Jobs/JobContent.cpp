#include "Sensor/Jobs/JobContent.h"

#include "Vor/JsonText.h"
#include "VorCommon/ArchiveStore.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace Sensor::Jobs {

namespace {

using nlohmann::json;

constexpr std::string_view Extension = ".vrjob";
constexpr std::string_view ServicesFolder = "controls/";
constexpr std::string_view ServiceFile = "/config.json";

/// The id of the service whose file this is; empty for another file.
std::string ServiceOf(std::string_view entry) {
    if (!entry.starts_with(ServicesFolder) || !entry.ends_with(ServiceFile) ||
        entry.size() <= ServicesFolder.size() + ServiceFile.size()) {
        return {};
    }
    const std::string_view id =
        entry.substr(ServicesFolder.size(), entry.size() - ServicesFolder.size() - ServiceFile.size());
    return id.find('/') == std::string_view::npos ? std::string(id) : std::string();
}

/// The member, or null when there is none.
json MemberOf(const json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return found == object.end() ? json() : *found;
}

std::size_t BlockCount(const json& assemblies) {
    std::size_t count = 0;
    if (assemblies.is_array()) {
        for (const json& assembly : assemblies) {
            const json blocks = MemberOf(assembly, "blocks");
            count += blocks.is_array() ? blocks.size() : 0;
        }
    }
    return count;
}

JobContent::Service Described(const std::string& serviceId, const json& document) {
    const json section = MemberOf(document, "vor:control");
    const json enabled = MemberOf(section, "enabled");
    return {.id = serviceId,
            .enabled = enabled.is_boolean() ? std::optional<bool>(enabled.get<bool>()) : std::nullopt,
            .parameters = MemberOf(section, "parameters"),
            .blocks = BlockCount(MemberOf(section, "registerAssemblyList"))};
}

} // namespace

JobContent JobContent::Read(const std::string& path) {
    VorCommon::ArchiveStore store(path);
    store.OpenJob();
    JobContent content;
    content.name = JobNameOf(std::filesystem::path(path).filename().string());
    content.path = path;
    std::error_code error;
    content.size = std::filesystem::file_size(path, error);
    content.modified = ModificationTime(path);
    for (const auto& [name, bytes] : store.Files()) {
        content.entries.push_back({name, bytes->size()});
        if (const std::string serviceId = ServiceOf(name); !serviceId.empty()) {
            const auto* text = reinterpret_cast<const char*>(bytes->data());
            content.services.push_back(Described(serviceId, Vor::ParseJson(text, bytes->size())));
        }
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
    return {{"name", name},         {"file", path},         {"size", size},
            {"modified", modified}, {"entries", entryList}, {"services", serviceMap}};
}

std::string JobNameOf(const std::string& fileName) {
    return fileName.ends_with(Extension) ? fileName.substr(0, fileName.size() - Extension.size()) : fileName;
}

std::string ModificationTime(const std::string& path) {
    struct stat status {};
    std::tm local{};
    std::array<char, 32> text{};
    if (stat(path.c_str(), &status) != 0 || localtime_r(&status.st_mtime, &local) == nullptr) {
        return {};
    }
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

} // namespace Sensor::Jobs
