// What the loader calls, compiled into each plug-in with the name and version of its assembly.

#include "Services/Common/PluginEntry.h"

#include "VorApi/LogThrown.h"
#include "VorControl/Control/VorCnLib.h"
#include "VorPlugin/PluginLib.h"

namespace {

/// The plug-in's one assembly, null while it doesn't exist.
yAssembly moduleAssembly = nullptr;

/// The status of `work`, also when it throws: no exception may pass the loader, which doesn't know its type.
template <typename Work>
yStatus StatusOf(Work work) {
    try {
        return work();
    } catch (const Vor::Exception& exception) {
        Vor::LogThrown(exception, "Plug-in %s can't be taken in", VOR_SERVICE_NAME);
        return exception.Status();
    } catch (const std::exception& exception) {
        Vor::LogThrown(exception, "Plug-in %s can't be taken in", VOR_SERVICE_NAME);
    } catch (...) {
        Vor::LogError("Plug-in %s can't be taken in, for something that is no exception", VOR_SERVICE_NAME);
    }
    return yERROR;
}

yStatus MakeAssembly() {
    yVersion version;
    if (const yStatus status = yVersion_Parse(&version, VOR_SERVICE_VERSION); status != yOK) {
        return status;
    }
    yVersion platformVersion;
    if (const yStatus status = yVersion_Parse(&platformVersion, "1.0.0.0"); status != yOK) {
        return status;
    }
    yStatus status = xyAssembly_ConstructInternal(&moduleAssembly, VOR_SERVICE_NAME, version, platformVersion);
    if (status == yOK) {
        status = xyAssembly_AddDependency(moduleAssembly, &VorCnLib_Construct);
    }
    if (status == yOK) {
        status = xyAssembly_Finalize(moduleAssembly);
    }
    if (status != yOK) {
        xyAssembly_VRelease(moduleAssembly);
    }
    return status;
}

yStatus ShareAssembly(yAssembly* assembly) {
    if (moduleAssembly != nullptr) {
        yAssembly_AddReference(moduleAssembly);
    } else if (const yStatus status = MakeAssembly(); status != yOK) {
        return status;
    }
    *assembly = moduleAssembly;
    return yOK;
}

yStatus Publish(VorPlugin::PluginLib& lib) {
    const auto plugin = VorControl::ControlPlugin::Create();
    Services::Common::FillPlugin(*plugin);
    lib.Add(plugin);
    return yOK;
}

} // namespace

extern "C" {

yStatus yPlugin_ConstructAssembly(yAssembly* assembly) {
    return StatusOf([assembly] { return ShareAssembly(assembly); });
}

const char* yPlugin_AssemblyVersion() {
    return VOR_SERVICE_VERSION;
}

const char* yPlugin_PlatformVersion() {
    return VOR_PLATFORM_VERSION;
}

yStatus yPlugin_Publish(VorPlugin::PluginLib& lib) {
    return StatusOf([&lib] { return Publish(lib); });
}
}
