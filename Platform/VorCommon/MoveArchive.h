#pragma once

#include "VorCommon/ArchiveFile.h"

#include <string>

namespace VorCommon {

/// Moves an archive that ArchiveFile::Make has made, and that nobody uses, to another place on the same disk. It
/// appears there whole, or not at all, and stays where it was if it can't be moved.
/// @throws Vor::Exception yERROR_NOT_FOUND without the archive, yERROR_ALREADY_EXISTS for a file that mustn't be
///         replaced, else yERROR.
void MoveArchive(const std::string& made, const std::string& place, ArchiveFile::Existing existing);

} // namespace VorCommon
