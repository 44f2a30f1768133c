#include "Sensor/Jobs/OverlayStore.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "VorControl/Persistence/PersistFields.h"

#include <memory>
#include <optional>

namespace Sensor::Jobs {

namespace {

using VorControl::Persistence::PERSISTENCE_FIELD_NAME_PARAMETERS;
using VorControl::Persistence::PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION;

/// The document, or nothing when the bytes aren't a service's file.
std::optional<nlohmann::json> ServiceDocument(const void* bytes, std::size_t size) {
    try {
        nlohmann::json document = Vor::ParseJson(static_cast<const char*>(bytes), size);
        if (!document.is_object() || !document.contains(JobFormat::SectionKey) ||
            !document[JobFormat::SectionKey].is_object()) {
            return std::nullopt;
        }
        const nlohmann::json& section = document[JobFormat::SectionKey];
        if (section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS) &&
            !section[PERSISTENCE_FIELD_NAME_PARAMETERS].is_object()) {
            return std::nullopt;
        }
        return document;
    } catch (const Vor::Exception&) {
        return std::nullopt;
    }
}

std::optional<nlohmann::json> ServiceDocument(const VorCommon::PersistBuffer& buffer) {
    return ServiceDocument(buffer.pointer + buffer.offset, buffer.size);
}

VorCommon::PersistBuffer BufferOf(const nlohmann::json& document) {
    const auto text = std::make_shared<const std::string>(document.dump(-1, ' '));
    return {reinterpret_cast<const unsigned char*>(text->data()), 0, text->size(), text};
}

} // namespace

OverlayStore::OverlayStore(VorCommon::IPersistStore& store, const Overlay& overlay)
    : store(store)
    , overlay(overlay) {}

VorCommon::PersistBuffer OverlayStore::Read(const std::string& path) const {
    VorCommon::PersistBuffer buffer = store.Read(path);
    const Overlay::Service* service = overlay.Find(path);
    if (service == nullptr) {
        return buffer;
    }
    std::optional<nlohmann::json> document = ServiceDocument(buffer);
    if (!document) {
        return buffer;
    }
    nlohmann::json& section = (*document)[JobFormat::SectionKey];
    if (!section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS)) {
        section[PERSISTENCE_FIELD_NAME_PARAMETERS] = nlohmann::json::object();
        section[PERSISTENCE_FIELD_NAME_PARAMETERS_VERSION] = service->version;
    }
    for (const auto& [parameter, value] : service->values) {
        section[PERSISTENCE_FIELD_NAME_PARAMETERS][parameter] = value;
    }
    return BufferOf(*document);
}

void OverlayStore::Write(const std::string& path, const void* bytes, std::size_t size) {
    const Overlay::Service* service = overlay.Find(path);
    std::optional<nlohmann::json> document;
    if (service != nullptr) {
        document = ServiceDocument(bytes, size);
    }
    if (!document || !(*document)[JobFormat::SectionKey].contains(PERSISTENCE_FIELD_NAME_PARAMETERS)) {
        store.Write(path, bytes, size);
        return;
    }
    nlohmann::json& parameters = (*document)[JobFormat::SectionKey][PERSISTENCE_FIELD_NAME_PARAMETERS];
    const nlohmann::json stored = StoredParameters(path);
    for (const auto& [parameter, value] : service->values) {
        if (!parameters.contains(parameter) || parameters[parameter] != value) {
            continue;
        }
        if (stored.contains(parameter)) {
            parameters[parameter] = stored[parameter];
        } else {
            parameters.erase(parameter);
        }
    }
    JobFormat::Write(store, path, *document);
}

bool OverlayStore::Exists(const std::string& path) const {
    return store.Exists(path);
}

nlohmann::json OverlayStore::StoredParameters(const std::string& path) const {
    if (store.Exists(path)) {
        if (const std::optional<nlohmann::json> document = ServiceDocument(store.Read(path))) {
            const nlohmann::json& section = (*document)[JobFormat::SectionKey];
            if (section.contains(PERSISTENCE_FIELD_NAME_PARAMETERS)) {
                return section[PERSISTENCE_FIELD_NAME_PARAMETERS];
            }
        }
    }
    return nlohmann::json::object();
}

} // namespace Sensor::Jobs
