// Any file as an archive that a client has sent. It is accepted exactly when a sensor would load it, a refusal names
// places, and the archive that is made of an accepted one has the same entries.

#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/ReceivedJob.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorCommon/ArchiveFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <unistd.h>

namespace {

using VorCommon::ArchiveFile;

std::optional<ArchiveFile::Entries> Received(const std::string& path) {
    try {
        return Sensor::Jobs::ReadReceivedJob(path);
    } catch (const Vor::DocumentException& e) {
        for (const Vor::DocumentError& error : e.Errors()) {
            const bool isPlace = error.pointer.empty() || error.pointer.front() == '/';
            if (!isPlace || error.text.empty() || error.text.find(path) != std::string::npos) {
                std::abort();
            }
        }
        return std::nullopt;
    }
}

bool IsLoadable(const std::string& path) {
    try {
        Sensor::Jobs::JobFormat::Open(path);
        return true;
    } catch (const Vor::Exception&) {
        return false;
    }
}

bool AreEqual(const ArchiveFile::Entries& one, const ArchiveFile::Entries& other) {
    if (one.size() != other.size()) {
        return false;
    }
    for (const auto& [name, content] : one) {
        const auto found = other.find(name);
        if (found == other.end() || *found->second != *content) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Vor::Logging::SetMinimumLevel(Vor::LevelError);
    static const std::filesystem::path Folder =
        std::filesystem::temp_directory_path() / ("vor-fuzz-" + std::to_string(getpid()));
    std::filesystem::create_directories(Folder);
    const std::string path = (Folder / "received").string();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    const auto entries = Received(path);
    if (entries.has_value() != IsLoadable(path)) {
        std::abort();
    }
    if (entries) {
        const std::string made = (Folder / "made").string();
        ArchiveFile(made).Make(*entries, ArchiveFile::Existing::Replace);
        if (!AreEqual(ArchiveFile(made).Read(), *entries)) {
            std::abort();
        }
    }
    std::filesystem::remove_all(Folder);
    return 0;
}
