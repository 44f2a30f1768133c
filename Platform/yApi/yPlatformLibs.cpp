#include "yApi/yPlatformLibs.h"

#include "yApi/yFault.h"

namespace {

constexpr yVersion PlatformVersion{1, 0, 0, 0};

yAssembly yApiLib = nullptr;
yAssembly yTsLib = nullptr;
yAssembly VcLib = nullptr;
yAssembly VorCoreLib = nullptr;
yAssembly VorApiLib = nullptr;

yStatus Construct(yAssembly& global, const char* name, const char* faultName, yAssembly* assembly) {
    if (const yStatus fault = yFault_Check(faultName); fault != yOK) {
        return fault;
    }
    if (assembly == nullptr) {
        return yERROR_PARAMETER;
    }
    if (global != nullptr) {
        yAssembly_AddReference(global);
        *assembly = global;
        return yOK;
    }
    yStatus status = xyAssembly_ConstructInternal(&global, name, PlatformVersion, PlatformVersion);
    if (status == yOK) {
        status = xyAssembly_Finalize(global);
    }
    if (status != yOK) {
        xyAssembly_VRelease(global);
        return status;
    }
    *assembly = global;
    return yOK;
}

} // namespace

yStatus yApiLib_Construct(yAssembly* assembly) {
    return Construct(yApiLib, "yApiLib", "yApiLib_Construct", assembly);
}

yStatus yTsLib_Construct(yAssembly* assembly) {
    return Construct(yTsLib, "yTsLib", "yTsLib_Construct", assembly);
}

yStatus VcLib_Construct(yAssembly* assembly) {
    return Construct(VcLib, "VcLib", "VcLib_Construct", assembly);
}

yStatus VorCoreLib_Construct(yAssembly* assembly) {
    return Construct(VorCoreLib, "VorCoreLib", "VorCoreLib_Construct", assembly);
}

yStatus VorApiLib_Construct(yAssembly* assembly) {
    return Construct(VorApiLib, "VorApiLib", "VorApiLib_Construct", assembly);
}
