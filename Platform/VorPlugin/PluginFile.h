#pragma once

#include "VorPlugin/PluginLib.h"
#include "yApi/yAssembly.h"

#include <filesystem>
#include <string>

namespace VorPlugin {

/// An opened plug-in file. Its code stays in the process until it is destroyed.
class PluginFile {
public:
    /// Opens the file and checks what it exports. Throws a Vor::Exception that names the file and what was expected.
    explicit PluginFile(const std::filesystem::path& path);
    ~PluginFile();
    PluginFile(const PluginFile&) = delete;
    PluginFile& operator=(const PluginFile&) = delete;

    /// True when both are the same file of the file system.
    bool SameAs(const PluginFile& other) const { return place == other.place; }

    /// The file's assembly, with a reference for the caller.
    yAssembly ConstructAssembly() const;
    /// Lets the file add its plug-ins to `lib`.
    void Publish(PluginLib& lib) const;

    /// Keeps the code in the process for ever.
    void Abandon() { handle = nullptr; }

private:
    void* Symbol(const char* name) const;
    void CheckVersions() const;

    std::string path;
    void* handle = nullptr;
    void* place = nullptr; ///< where the dynamic linker keeps the file
};

} // namespace VorPlugin
