#include "Sensor/Jobs/JobFiles.h"

#include "Sensor/Jobs/JobContent.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Vor/Exception.h"
#include "VorCommon/PersistManager.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

namespace Sensor::Jobs {

namespace {

/// A file that is removed at the end.
class TemporaryFile {
public:
    explicit TemporaryFile(std::filesystem::path path)
        : path(std::move(path)) {}
    ~TemporaryFile() {
        std::error_code error;
        std::filesystem::remove(path, error);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string Path() const { return path.string(); }

private:
    const std::filesystem::path path;
};

} // namespace

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
    const std::string path = PathOf(name);
    std::error_code error;
    if (const auto size = std::filesystem::file_size(path, error); !error && size > MaxReadSize) {
        Vor::Throw(yERROR_FORMAT, "The job '%s' has %s bytes, and at most %s can be read.", name, std::to_string(size),
                   std::to_string(MaxReadSize));
    }
    const TemporaryFile copy(folder / ".export");
    VorCommon::ArchiveFile(path).CopyTo(copy.Path(), VorCommon::ArchiveFile::Existing::Replace);
    std::ifstream stream(copy.Path(), std::ios::binary);
    std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.good()) {
        Vor::Throw(yERROR, "The copy of the job '%s' can't be read.", name);
    }
    return bytes;
}

} // namespace Sensor::Jobs
