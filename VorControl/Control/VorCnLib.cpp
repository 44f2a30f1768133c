#include "VorControl/Control/VorCnLib.h"

#include "yApi/yPlatformLibs.h"
#include "yApi/yVersion.h"

#include <initializer_list>

yAssembly xxVorCnLib_assembly = nullptr;

namespace {

constexpr const char* VersionText = "1.0.0.0";

yStatus AddDependenciesAndFinalize(yAssembly assembly) {
    for (const yAssemblyConstruct construct :
         {&yApiLib_Construct, &yTsLib_Construct, &VcLib_Construct, &VorCoreLib_Construct, &VorApiLib_Construct}) {
        if (const yStatus status = xyAssembly_AddDependency(assembly, construct); status != yOK) {
            return status;
        }
    }
    return xyAssembly_Finalize(assembly);
}

} // namespace

yStatus VorCnLib_Construct(yAssembly* assembly) {
    if (xxVorCnLib_assembly != nullptr) {
        yAssembly_AddReference(xxVorCnLib_assembly);
        *assembly = xxVorCnLib_assembly;
        return yOK;
    }
    yVersion version;
    yVersion platformVersion;
    if (const yStatus status = yVersion_Parse(&version, VersionText); status != yOK) {
        return status;
    }
    if (const yStatus status = yVersion_Parse(&platformVersion, VersionText); status != yOK) {
        return status;
    }
    yStatus status = xyAssembly_ConstructInternal(&xxVorCnLib_assembly, "VorCnLib", version, platformVersion);
    if (status == yOK) {
        status = AddDependenciesAndFinalize(xxVorCnLib_assembly);
    }
    if (status != yOK) {
        if (xxVorCnLib_assembly != nullptr) {
            xyAssembly_VRelease(xxVorCnLib_assembly);
        }
        return status;
    }
    *assembly = xxVorCnLib_assembly;
    return yOK;
}

yStatus yPlugin_ConstructAssembly(yAssembly* assembly) {
    return VorCnLib_Construct(assembly);
}

const char* yPlugin_AssemblyVersion() {
    return VersionText;
}

const char* yPlugin_PlatformVersion() {
    return VersionText;
}
