#include "Sensor/Jobs/JobFiles.h"

#include "Sensor/Jobs/JobContent.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Vor/Exception.h"
#include "VorCommon/PersistManager.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace Sensor::Jobs {

JobFiles::JobFiles(std::filesystem::path folder)
    : folder(std::move(folder)) {}

std::vector<std::string> JobFiles::Names() const {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string fileName = entry->path().filename().string();
        if (!fileName.starts_with('.') && JobFormat::JobNameOf(fileName) != fileName) {
            names.push_back(JobFormat::JobNameOf(fileName));
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        Vor::Throw(yERROR, "%s: %s.", folder.string(), error.message());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string JobFiles::PathOf(const std::string& name) const {
    return (folder / VorCommon::PersistManager::JobFileName(name)).string();
}

bool JobFiles::Has(const std::string& name) const {
    try {
        return VorCommon::ArchiveFile(PathOf(name)).Exists();
    } catch (const Vor::Exception&) {
        return false;
    }
}

JobFiles::Description JobFiles::Describe(const std::string& name) const {
    const VorCommon::ArchiveFile file(PathOf(name));
    if (!file.Exists()) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no job '%s'.", name);
    }
    Description description{.name = name, .modified = ModificationTime(file.Path())};
    std::error_code error;
    description.size = std::filesystem::file_size(file.Path(), error);
    if (error) {
        description.size = 0;
    }
    try {
        for (const std::string& entry : file.Names()) {
            if (std::string serviceId = JobFormat::ServiceOf(entry); !serviceId.empty()) {
                description.services.push_back(std::move(serviceId));
            }
        }
    } catch (const Vor::Exception& e) {
        description.failure = e.what();
    }
    return description;
}

std::vector<unsigned char> JobFiles::Read(const std::string& name) const {
    VorCommon::ArchiveFile copy((folder / ".export").string());
    VorCommon::ArchiveFile(PathOf(name)).CopyTo(copy.Path(), VorCommon::ArchiveFile::Existing::Replace);
    std::ifstream stream(copy.Path(), std::ios::binary);
    std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(stream), {}};
    const bool isRead = stream.good();
    copy.Remove();
    if (!isRead) {
        Vor::Throw(yERROR, "The copy of the job '%s' can't be read.", name);
    }
    return bytes;
}

} // namespace Sensor::Jobs
