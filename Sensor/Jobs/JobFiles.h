#pragma once

#include "VorCommon/ArchiveFile.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Sensor::Jobs {

/// The files of the jobs in a folder. Names are without the extension. Calls block until the disk has answered. From
/// any thread.
class JobFiles {
public:
    /// A file as it is, also a damaged one.
    struct Description {
        std::string name;
        std::uintmax_t size = 0;                ///< bytes
        std::string modified = std::string();   ///< see ModificationTime
        std::vector<std::string> services = {}; ///< those for which it has settings
        std::string failure = std::string();    ///< why it can't be read; else empty
    };

    /// Bytes. More than an archive of the largest content has.
    static constexpr std::uintmax_t MaxReadSize = VorCommon::ArchiveFile::MaxTotalSize * 5 / 4;

    explicit JobFiles(std::filesystem::path folder);

    /// Ascending; none when there is no folder. A name may be one that PathOf refuses. Throws a Vor::Exception that
    /// names the folder and the reason.
    std::vector<std::string> Names() const;
    /// The path of a job, whether it exists or not. Throws a Vor::Exception for a bad name.
    std::string PathOf(const std::string& name) const;
    /// False for a bad name.
    bool Has(const std::string& name) const;
    /// Throws a Vor::Exception for a bad name, and when there is no such job.
    Description Describe(const std::string& name) const;
    /// The bytes of a job's archive as it is between two saves. Throws a Vor::Exception when there is no whole archive,
    /// and yERROR_FORMAT when its file is larger than MaxReadSize.
    std::vector<unsigned char> Read(const std::string& name) const;

private:
    const std::filesystem::path folder;
};

} // namespace Sensor::Jobs
