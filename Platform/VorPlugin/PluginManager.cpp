#include "VorPlugin/PluginManager.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorPlugin/PluginFile.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace VorPlugin {

/// A library that was added. Its parts go in the reverse of this order: plug-ins, assembly, code.
struct PluginManager::Library {
    struct AssemblyRelease {
        void operator()(yAssembly assembly) const {
            if (const yStatus status = xyAssembly_VRelease(assembly); status != yOK) {
                Vor::LogWarning("Releasing the assembly of a plug-in gave status %d", status);
            }
        }
    };

    std::unique_ptr<PluginFile> file; ///< null for plug-ins of the program itself
    std::unique_ptr<std::remove_pointer_t<yAssembly>, AssemblyRelease> assembly;
    std::unique_ptr<PluginLib> lib;
};

/// The code of a library that was unloaded, and those of its plug-ins that somebody still held then.
struct PluginManager::Retired {
    std::unique_ptr<PluginFile> file;
    std::vector<std::weak_ptr<IPlugin>> plugins;
};

PluginManager::PluginManager() = default;

PluginManager::~PluginManager() {
    while (!libraries.empty()) {
        Unload(libraries.size() - 1);
    }
    for (Retired& library : retired) {
        if (std::any_of(library.plugins.begin(), library.plugins.end(), [](const auto& p) { return !p.expired(); })) {
            Vor::LogWarning("A plug-in is still in use, so its code stays in the process");
            library.file->Abandon();
        }
    }
}

const PluginLib& PluginManager::Load(const std::filesystem::path& file) {
    try {
        return Open(file);
    } catch (const std::exception& e) {
        refusals.push_back({file.string(), e.what()});
        throw;
    }
}

const PluginLib& PluginManager::Open(const std::filesystem::path& path) {
    Library library;
    library.file = std::make_unique<PluginFile>(path);
    if (std::any_of(libraries.begin(), libraries.end(),
                    [&](const auto& other) { return other->file && other->file->SameAs(*library.file); })) {
        Vor::Throw(yERROR_ALREADY_EXISTS, "Plug-in \"%s\": expected a file that isn't loaded already", path.string());
    }
    library.lib = std::make_unique<PluginLib>(path.string());
    library.assembly.reset(library.file->ConstructAssembly());
    library.file->Publish(*library.lib);
    return Keep(std::move(library));
}

void PluginManager::LoadFolder(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    try {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() == ".so") {
                files.push_back(entry.path());
            }
        }
    } catch (const std::filesystem::filesystem_error& e) {
        Vor::Throw(yERROR_NOT_FOUND, "Plug-in folder \"%s\" can't be read: %s", folder.string(), e.code().message());
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        try {
            Load(file);
        } catch (const std::exception& e) {
            Vor::LogError("%s", e.what());
        }
    }
}

const PluginLib& PluginManager::Add(std::unique_ptr<PluginLib> lib) {
    Library library;
    library.lib = std::move(lib);
    return Keep(std::move(library));
}

const PluginLib& PluginManager::Keep(Library library) {
    libraries.push_back(std::make_unique<Library>(std::move(library)));
    const PluginLib& lib = *libraries.back()->lib;
    Raise(lib, PluginEvent::Loaded);
    return lib;
}

void PluginManager::Unload(const PluginLib& lib) {
    const auto found =
        std::find_if(libraries.begin(), libraries.end(), [&](const auto& other) { return other->lib.get() == &lib; });
    if (found == libraries.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "The library isn't loaded");
    }
    Unload(static_cast<std::size_t>(found - libraries.begin()));
}

void PluginManager::Unload(std::size_t index) {
    Raise(*libraries[index]->lib, PluginEvent::Unloading);
    const std::unique_ptr<Library> library = std::move(libraries[index]);
    libraries.erase(libraries.begin() + static_cast<std::ptrdiff_t>(index));
    Retired gone;
    gone.plugins.assign(library->lib->plugins.begin(), library->lib->plugins.end());
    library->lib.reset();
    library->assembly.reset();
    if (library->file) {
        std::erase_if(gone.plugins, [](const auto& plugin) { return plugin.expired(); });
        gone.file = std::move(library->file);
        retired.push_back(std::move(gone));
    }
}

std::size_t PluginManager::Count() const {
    return libraries.size();
}

const PluginLib& PluginManager::At(std::size_t index) const {
    if (index >= libraries.size()) {
        Vor::Throw(yERROR_PARAMETER, "Index %zu into the plug-in libraries is out of bounds", index);
    }
    return *libraries[index]->lib;
}

const std::vector<PluginManager::Refusal>& PluginManager::Refusals() const {
    return refusals;
}

Vor::Event<const PluginLib&, PluginEvent>& PluginManager::LoadEvent() {
    return loadEvent;
}

void PluginManager::Raise(const PluginLib& lib, PluginEvent event) {
    try {
        loadEvent.Raise(lib, event);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "Exception in a handler of the plug-in load event for \"%s\"", lib.Path());
    } catch (...) {
        Vor::LogError("Exception of another type in a handler of the plug-in load event for \"%s\"", lib.Path());
    }
}

} // namespace VorPlugin
