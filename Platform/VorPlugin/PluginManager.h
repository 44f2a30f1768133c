#pragma once

#include "VorApi/Event.h"
#include "VorPlugin/PluginEvent.h"
#include "VorPlugin/PluginLib.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace VorPlugin {

/// Opens plug-in libraries and keeps them. On the main loop only; its events are raised there too.
///
/// A library exports, from its own file,
///   extern "C" yStatus yPlugin_ConstructAssembly(yAssembly*);   // one reference for the caller
///   extern "C" const char* yPlugin_AssemblyVersion();
///   extern "C" const char* yPlugin_PlatformVersion();
///   extern "C" yStatus yPlugin_Publish(VorPlugin::PluginLib&);
/// and is opened with local binding, so its names hide no others. The platform version is "1.0.0.0+" and a hash
/// of the headers that the library was compiled against: with other headers than this file's own it is refused.
class PluginManager {
public:
    /// A file that was refused, and why.
    struct Refusal {
        std::string path;
        std::string reason;
    };

    PluginManager();
    /// Unloads all libraries, the last one first, with their events.
    ~PluginManager();
    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;

    /// Opens one file and raises the loaded event. A file that is refused leaves nothing behind; it is noted among the
    /// refusals, and a Vor::Exception names it and what was expected.
    const PluginLib& Load(const std::filesystem::path& file);
    /// Opens each "*.so" of a folder, in order of name; one that is refused is logged and noted. Throws -999 when the
    /// folder can't be read.
    void LoadFolder(const std::filesystem::path& folder);
    /// Adds plug-ins of the program itself, as a library without a file, and raises the loaded event.
    const PluginLib& Add(std::unique_ptr<PluginLib> lib);

    /// Raises the unloading event, drops the plug-ins and releases the assembly. Throws -999 for a library that isn't
    /// here. The code stays in the process until the manager goes, since what it made may still run; then it is closed,
    /// unless somebody still holds a plug-in of it.
    void Unload(const PluginLib& lib);

    std::size_t Count() const;
    /// Throws -997 at or past the count.
    const PluginLib& At(std::size_t index) const;
    const std::vector<Refusal>& Refusals() const;

    /// What a handler throws is logged.
    Vor::Event<const PluginLib&, PluginEvent>& LoadEvent();

private:
    struct Library;
    struct Retired;

    const PluginLib& Open(const std::filesystem::path& path);
    const PluginLib& Keep(Library library);
    void Unload(std::size_t index);
    void Raise(const PluginLib& lib, PluginEvent event);

    std::vector<Retired> retired;
    std::vector<std::unique_ptr<Library>> libraries;
    std::vector<Refusal> refusals;
    Vor::Event<const PluginLib&, PluginEvent> loadEvent;
};

} // namespace VorPlugin
