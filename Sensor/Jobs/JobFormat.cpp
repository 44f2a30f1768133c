#include "Sensor/Jobs/JobFormat.h"

#include "Sensor/Jobs/ToolsEntry.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "VorControl/Persistence/PersistFields.h"
#include "yApi/yStatus.h"

#include <string_view>

namespace Sensor::Jobs::JobFormat {

namespace {

using nlohmann::json;
using VorControl::Persistence::PERSISTENCE_FIELD_NAME_VERSION;

constexpr const char* Version = "1";
constexpr std::string_view Folder = "controls/";
constexpr std::string_view File = "/config.json";

} // namespace

std::string JobNameOf(const std::string& fileName) {
    return fileName.ends_with(Extension) ? fileName.substr(0, fileName.size() - std::string_view(Extension).size())
                                         : fileName;
}

std::string PathOf(const std::string& serviceId) {
    return "/" + std::string(Folder) + serviceId + std::string(File);
}

std::string ServiceOf(const std::string& entryName) {
    if (!entryName.starts_with(Folder) || !entryName.ends_with(File) ||
        entryName.size() <= Folder.size() + File.size()) {
        return {};
    }
    const std::string id = entryName.substr(Folder.size(), entryName.size() - Folder.size() - File.size());
    return id.find('/') == std::string::npos ? id : std::string();
}

json Document(json section) {
    return {{PERSISTENCE_FIELD_NAME_VERSION, Version}, {SectionKey, std::move(section)}};
}

bool HasSection(const json& document) {
    return document.is_object() && document.contains(SectionKey) && document.at(SectionKey).is_object() &&
           document.value(PERSISTENCE_FIELD_NAME_VERSION, json()) == Version;
}

void RequireSection(const json& document, const std::string& path) {
    if (!HasSection(document)) {
        Vor::Throw(yERROR_FORMAT, "entry '%s' holds no settings of version %s.", path, Version);
    }
}

json Read(const VorCommon::IPersistStore& store, const std::string& path) {
    const VorCommon::PersistBuffer buffer = store.Read(path);
    return Vor::ParseJson(reinterpret_cast<const char*>(buffer.pointer + buffer.offset), buffer.size);
}

void Write(VorCommon::IPersistStore& store, const std::string& path, const json& document) {
    const std::string text = document.dump(-1, ' ');
    store.Write(path, text.data(), text.size());
}

VorCommon::ArchiveStore Open(const std::string& filePath) {
    VorCommon::ArchiveStore store(filePath);
    store.OpenJob();
    for (const auto& [name, content] : store.Files()) {
        const std::string serviceId = ServiceOf(name);
        if (!serviceId.empty() && !HasSection(Read(store, PathOf(serviceId)))) {
            Vor::Throw(yERROR_FORMAT, "Archive '%s': entry '%s' holds no settings of version %s.", filePath, name,
                       Version);
        }
    }
    try {
        ToolsEntry::Read(store);
    } catch (const Vor::Exception& e) {
        Vor::Throw(e.Status(), "Archive '%s': %s", filePath, e.what());
    }
    return store;
}

} // namespace Sensor::Jobs::JobFormat
