#pragma once

#include "Tests/Support/BuiltFile.h"

#include <filesystem>
#include <string>

namespace Tests {

/// The path of a file of the source tree.
std::string SourceFile(const std::string& name);

/// The folder of real recordings: VOR_RECORDINGS, or one beside the source tree. It may be missing.
std::filesystem::path RecordingsFolder();

} // namespace Tests
