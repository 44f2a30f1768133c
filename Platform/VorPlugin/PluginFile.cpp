#include "VorPlugin/PluginFile.h"

#include "Vor/Exception.h"
#include "yApi/yVersion.h"

#include <dlfcn.h>
#include <link.h>

namespace VorPlugin {

namespace {

constexpr const char* ExpectedPlatformVersion = VOR_PLATFORM_VERSION;

constexpr const char* ConstructName = "yPlugin_ConstructAssembly";
constexpr const char* AssemblyVersionName = "yPlugin_AssemblyVersion";
constexpr const char* PlatformVersionName = "yPlugin_PlatformVersion";
constexpr const char* PublishName = "yPlugin_Publish";

/// Calls a function of the file. Whatever it throws becomes a Vor::Exception of this library, since the thrown object
/// must be gone before the file is closed.
template <typename Call>
auto CallEntry(const std::string& path, const char* name, Call call) {
    try {
        return call();
    } catch (const Vor::Exception& e) {
        Vor::Throw(e.Status(), "Plug-in \"%s\": expected %s to succeed, it threw status %d: %s", path, name, e.Status(),
                   e.what());
    } catch (const std::exception& e) {
        Vor::Throw(yERROR, "Plug-in \"%s\": expected %s to succeed, it threw: %s", path, name, e.what());
    } catch (...) {
        Vor::Throw(yERROR, "Plug-in \"%s\": expected %s to succeed, it threw something that isn't an exception", path,
                   name);
    }
}

void CheckStatus(const std::string& path, const char* name, yStatus status) {
    if (status != yOK) {
        Vor::Throw(status, "Plug-in \"%s\": expected %s to succeed, it returned %d", path, name, status);
    }
}

std::string VersionText(const std::string& path, const char* name, void* function) {
    const auto version = reinterpret_cast<const char* (*)()>(function);
    return CallEntry(path, name, [version]() -> std::string {
        const char* text = version();
        return text == nullptr ? "" : text;
    });
}

void* OpenFile(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::absolute(path, error);
    if (error || !std::filesystem::is_regular_file(file, error)) {
        Vor::Throw(yERROR_NOT_FOUND, "Plug-in \"%s\": expected a file", path.string());
    }
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        Vor::Throw(yERROR_FORMAT, "Plug-in \"%s\": expected a library that can be opened: %s", path.string(),
                   dlerror());
    }
    return handle;
}

} // namespace

PluginFile::PluginFile(const std::filesystem::path& path)
    : path(path.string())
    , handle(OpenFile(path)) {
    try {
        if (dlinfo(handle, RTLD_DI_LINKMAP, &place) != 0) {
            Vor::Throw(yERROR, "Plug-in \"%s\": expected to be found among the opened files", this->path);
        }
        for (const char* name : {ConstructName, AssemblyVersionName, PlatformVersionName, PublishName}) {
            Symbol(name);
        }
        CheckVersions();
    } catch (...) {
        dlclose(handle);
        throw;
    }
}

PluginFile::~PluginFile() {
    if (handle != nullptr) {
        dlclose(handle);
    }
}

// A lookup on the handle also finds what the file's dependencies export under the same name; only the file's own
// counts.
void* PluginFile::Symbol(const char* name) const {
    void* address = dlsym(handle, name);
    Dl_info info{};
    void* owner = nullptr;
    if (address == nullptr || dladdr1(address, &info, &owner, RTLD_DL_LINKMAP) == 0 || owner != place) {
        Vor::Throw(yERROR_NOT_FOUND, "Plug-in \"%s\": expected an exported function %s of its own", path, name);
    }
    return address;
}

void PluginFile::CheckVersions() const {
    const std::string platform = VersionText(path, PlatformVersionName, Symbol(PlatformVersionName));
    if (platform != ExpectedPlatformVersion) {
        Vor::Throw(yERROR_VERSION, "Plug-in \"%s\": expected platform version %s, it was built for \"%s\"", path,
                   ExpectedPlatformVersion, platform);
    }
    const std::string assembly = VersionText(path, AssemblyVersionName, Symbol(AssemblyVersionName));
    yVersion version;
    if (yVersion_Parse(&version, assembly.c_str()) != yOK) {
        Vor::Throw(yERROR_VERSION, "Plug-in \"%s\": expected a version such as 1.0.0.0, its own is \"%s\"", path,
                   assembly);
    }
}

yAssembly PluginFile::ConstructAssembly() const {
    const auto construct = reinterpret_cast<yStatus (*)(yAssembly*)>(Symbol(ConstructName));
    yAssembly assembly = nullptr;
    CheckStatus(path, ConstructName,
                CallEntry(path, ConstructName, [construct, &assembly] { return construct(&assembly); }));
    if (assembly == nullptr) {
        Vor::Throw(yERROR, "Plug-in \"%s\": expected an assembly of %s, it gave none", path, ConstructName);
    }
    return assembly;
}

void PluginFile::Publish(PluginLib& lib) const {
    const auto publish = reinterpret_cast<yStatus (*)(PluginLib&)>(Symbol(PublishName));
    CheckStatus(path, PublishName, CallEntry(path, PublishName, [publish, &lib] { return publish(lib); }));
}

} // namespace VorPlugin
