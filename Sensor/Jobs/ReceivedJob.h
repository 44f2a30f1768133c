#pragma once

#include "VorCommon/ArchiveFile.h"

#include <string>

namespace Sensor::Jobs {

/// Reads an archive from elsewhere and checks it as JobFormat::Open does. Throws a Vor::DocumentException that names
/// each entry that is wrong, but not the file. A place is a JSON pointer with the name of the entry as its only step;
/// it is empty when the archive itself can't be read.
VorCommon::ArchiveFile::Entries ReadReceivedJob(const std::string& filePath);

/// What a failure of an archive says without the file's name.
std::string WithoutArchiveName(const std::string& text, const std::string& filePath);

} // namespace Sensor::Jobs
