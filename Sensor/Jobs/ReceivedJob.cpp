#include "Sensor/Jobs/ReceivedJob.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "Vor/JsonText.h"
#include "yApi/yStatus.h"

#include <vector>

#include <nlohmann/json.hpp>

namespace Sensor::Jobs {

namespace {

using VorCommon::ArchiveFile;

constexpr const char* JsonExtension = ".json";

std::string PointerOf(const std::string& entryName) {
    nlohmann::json::json_pointer pointer;
    pointer.push_back(entryName);
    return pointer.to_string();
}

void CheckEntry(const std::string& name, const std::vector<unsigned char>& content) {
    nlohmann::json document;
    try {
        document = Vor::ParseJson(reinterpret_cast<const char*>(content.data()), content.size());
    } catch (const Vor::Exception& e) {
        Vor::Throw(yERROR_FORMAT, "Entry '%s' is no JSON: %s", name, e.what());
    }
    if (!JobFormat::ServiceOf(name).empty()) {
        try {
            JobFormat::RequireSection(document, name);
        } catch (const Vor::Exception& e) {
            Vor::Throw(yERROR_FORMAT, "The archive isn't a job: %s", e.what());
        }
    }
}

ArchiveFile::Entries ReadArchive(const std::string& filePath) {
    try {
        return ArchiveFile(filePath).Read();
    } catch (const Vor::Exception& e) {
        Vor::Throw(e.Status(), "The archive can't be read: %s", WithoutArchiveName(e.what(), filePath));
    }
}

} // namespace

ArchiveFile::Entries ReadReceivedJob(const std::string& filePath) {
    Vor::DocumentErrors errors;
    ArchiveFile::Entries entries;
    try {
        entries = ReadArchive(filePath);
    } catch (const Vor::Exception& e) {
        errors.Add("", e);
    }
    for (const auto& [name, content] : entries) {
        if (!name.ends_with(JsonExtension)) {
            continue;
        }
        try {
            CheckEntry(name, *content);
        } catch (const Vor::Exception& e) {
            errors.Add(PointerOf(name), e);
        }
    }
    errors.ThrowIfAny();
    return entries;
}

std::string WithoutArchiveName(const std::string& text, const std::string& filePath) {
    const std::string begin = "Archive '" + filePath + "': ";
    return text.starts_with(begin) ? text.substr(begin.size()) : text;
}

} // namespace Sensor::Jobs
