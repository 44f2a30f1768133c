#include "Sensor/Jobs/DefaultJob.h"

#include "Sensor/Jobs/JobFormat.h"
#include "Vor/Exception.h"
#include "VorCommon/ArchiveFile.h"
#include "VorCommon/PersistManager.h"

#include <memory>
#include <vector>

namespace Sensor::Jobs::DefaultJob {

namespace {

constexpr const char* EntryName = "sensor/defaultJob";

} // namespace

std::string Read(const std::filesystem::path& workspace) {
    try {
        const VorCommon::ArchiveFile file(workspace.string());
        if (!file.Exists()) {
            return {};
        }
        const auto entries = file.Read();
        const auto found = entries.find(EntryName);
        if (found == entries.end()) {
            return {};
        }
        const std::string name(found->second->begin(), found->second->end());
        return JobFormat::JobNameOf(VorCommon::PersistManager::JobFileName(name));
    } catch (const Vor::Exception&) {
        return {}; // the load of the workspace reports it
    }
}

void Write(const std::filesystem::path& workspace, const std::string& name) {
    VorCommon::ArchiveFile(workspace.string())
        .Write({{EntryName, std::make_shared<const std::vector<unsigned char>>(name.begin(), name.end())}});
}

} // namespace Sensor::Jobs::DefaultJob
