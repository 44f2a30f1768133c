#include "Tests/Support/BuildFolders.h"

#include "SourceFolder.h"

#include <cstdlib>

namespace Tests {

std::string SourceFile(const std::string& name) {
    return (std::filesystem::path(SourceFolder) / name).string();
}

std::filesystem::path RecordingsFolder() {
    const char* folder = std::getenv("VOR_RECORDINGS");
    return folder != nullptr ? std::filesystem::path(folder)
                             : std::filesystem::path(SourceFile("../shared/recordings"));
}

} // namespace Tests
