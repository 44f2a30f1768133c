#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Bench {

/// A temporary folder, removed with its content at destruction.
class TempFolder {
public:
    TempFolder() {
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
    }
    ~TempFolder() {
        std::error_code error;
        std::filesystem::remove_all(name, error);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::filesystem::path Path() const { return name; }

private:
    std::string name = (std::filesystem::temp_directory_path() / "vor-bench-XXXXXX").string();
};

} // namespace Bench
