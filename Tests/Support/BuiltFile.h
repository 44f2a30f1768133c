#pragma once

#include <filesystem>
#include <string>

namespace Tests {

/// The path of a built program, library or folder, such as "vorsensor" or "plugins": those of a build lie in and below
/// the folder of the running program.
inline std::string BuiltFile(const std::string& name) {
    return (std::filesystem::canonical("/proc/self/exe").parent_path() / name).string();
}

/// The path of a built plug-in, such as "sample.so".
inline std::string BuiltPlugin(const std::string& name) {
    const std::string example = BuiltFile("examples/" + name);
    return std::filesystem::exists(example) ? example : BuiltFile("plugins/" + name);
}

} // namespace Tests
