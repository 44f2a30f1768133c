#include "Sensor/Jobs/OverlayStore.h"

#include "Vor/Exception.h"
#include "Vor/JsonText.h"

#include <memory>
#include <optional>

namespace Sensor::Jobs {

namespace {

constexpr const char* SectionKey = "vor:control";
constexpr const char* ParametersKey = "parameters";
constexpr const char* VersionKey = "parametersVersion";

/// The document, or nothing when the bytes aren't a service's file.
std::optional<nlohmann::json> ServiceDocument(const void* bytes, std::size_t size) {
    try {
        nlohmann::json document = Vor::ParseJson(static_cast<const char*>(bytes), size);
        if (!document.is_object() || !document.contains(SectionKey) || !document[SectionKey].is_object()) {
            return std::nullopt;
        }
        const nlohmann::json& section = document[SectionKey];
        if (section.contains(ParametersKey) && !section[ParametersKey].is_object()) {
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
    nlohmann::json& section = (*document)[SectionKey];
    if (!section.contains(ParametersKey)) {
        section[ParametersKey] = nlohmann::json::object();
        section[VersionKey] = service->version;
    }
    for (const auto& [parameter, value] : service->values) {
        section[ParametersKey][parameter] = value;
    }
    return BufferOf(*document);
}

void OverlayStore::Write(const std::string& path, const void* bytes, std::size_t size) {
    const Overlay::Service* service = overlay.Find(path);
    std::optional<nlohmann::json> document;
    if (service != nullptr) {
        document = ServiceDocument(bytes, size);
    }
    if (!document || !(*document)[SectionKey].contains(ParametersKey)) {
        store.Write(path, bytes, size);
        return;
    }
    nlohmann::json& parameters = (*document)[SectionKey][ParametersKey];
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
    const std::string text = document->dump(-1, ' ');
    store.Write(path, text.data(), text.size());
}

bool OverlayStore::Exists(const std::string& path) const {
    return store.Exists(path);
}

nlohmann::json OverlayStore::StoredParameters(const std::string& path) const {
    if (store.Exists(path)) {
        if (const std::optional<nlohmann::json> document = ServiceDocument(store.Read(path))) {
            const nlohmann::json& section = (*document)[SectionKey];
            if (section.contains(ParametersKey)) {
                return section[ParametersKey];
            }
        }
    }
    return nlohmann::json::object();
}

} // namespace Sensor::Jobs
