#include "Tests/Support/BuildFolders.h"

#include "SourceFolder.h"

#include <cstdlib>

namespace Tests {

// All programs and libraries of a build are in one folder or below it.
std::string BuiltFile(const std::string& name) {
    return (std::filesystem::canonical("/proc/self/exe").parent_path() / name).string();
}

std::string SourceFile(const std::string& name) {
    return (std::filesystem::path(SourceFolder) / name).string();
}

std::filesystem::path RecordingsFolder() {
    const char* folder = std::getenv("VOR_RECORDINGS");
    return folder != nullptr ? std::filesystem::path(folder)
                             : std::filesystem::path(SourceFile("../shared/recordings"));
}

} // namespace Tests
