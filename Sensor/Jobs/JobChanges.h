#pragma once

#include "VorCommon/ArchiveFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Sensor::Jobs {

/// What differs between two contents of a job, member by member.
struct JobChanges {
    struct Change {
        std::string entry;   ///< of the archive
        std::string pointer; ///< to the member (RFC 6901); empty for an entry that is no JSON
        /// As JSON; empty when there is none.
        std::string before;
        std::string after;
    };

    static constexpr std::size_t MaxListed = 1000;
    static constexpr std::size_t MaxTextSize = 1048576; ///< bytes of the texts of all that are listed

    std::vector<Change> listed; ///< the first ones
    std::size_t count = 0;      ///< of all

    /// Compares the entries that `after` has.
    static JobChanges Between(const VorCommon::ArchiveFile::Entries& before,
                              const VorCommon::ArchiveFile::Entries& after);
};

} // namespace Sensor::Jobs
