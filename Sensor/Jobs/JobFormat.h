#pragma once

#include "VorCommon/ArchiveStore.h"

#include <string>

#include <nlohmann/json.hpp>

/// The format of a job: an archive with an entry "controls/SERVICE/config.json" for each service. The entry is a JSON
/// document with a version and the section of the service's settings, whose keys are those of PersistFields.h. The
/// limits of the tools are in another entry, see ToolsEntry.
namespace Sensor::Jobs::JobFormat {

inline constexpr const char* Extension = ".vrjob";
inline constexpr const char* SectionKey = "vor:control";
/// In the section: whether the service is started.
inline constexpr const char* EnabledKey = "enabled";

/// The name of a job from the name of its file.
std::string JobNameOf(const std::string& fileName);

/// The path of a service's entry in the store of a job.
std::string PathOf(const std::string& serviceId);
/// The id of the service whose entry this is, by the name in the archive; empty for another entry.
std::string ServiceOf(const std::string& entryName);

/// A document with these settings.
nlohmann::json Document(nlohmann::json section);
/// Whether the document has a section of settings, in the format's version.
bool HasSection(const nlohmann::json& document);
/// Throws yERROR_FORMAT, naming the entry, when HasSection is false.
void RequireSection(const nlohmann::json& document, const std::string& path);

/// Throws a Vor::Exception when there is no entry, or it is no JSON.
nlohmann::json Read(const VorCommon::IPersistStore& store, const std::string& path);
void Write(VorCommon::IPersistStore& store, const std::string& path, const nlohmann::json& document);

/// Reads the archive of a job, which must be there and whole. Throws a Vor::Exception that names file, entry and
/// reason.
VorCommon::ArchiveStore Open(const std::string& filePath);

} // namespace Sensor::Jobs::JobFormat
