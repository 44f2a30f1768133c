#pragma once

#include "VorCommon/ArchiveFile.h"

#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// The bytes of an entry of an archive.
inline VorCommon::ArchiveFile::Content Bytes(const std::string& text) {
    return std::make_shared<const std::vector<unsigned char>>(text.begin(), text.end());
}

} // namespace Tests
