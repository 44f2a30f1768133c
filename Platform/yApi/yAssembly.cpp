#include "yApi/yAssembly.h"

#include "yApi/yFault.h"

#include <atomic>
#include <ranges>
#include <string>
#include <vector>

struct yAssemblyObject {
    yAssembly* global;
    std::string name;
    yVersion version;
    yVersion platformVersion;
    std::atomic<std::int32_t> references{1};
    std::vector<yAssembly> dependencies{};
    bool finalized = false;
};

yStatus xyAssembly_ConstructInternal(yAssembly* global, const char* name, const yVersion& version,
                                     const yVersion& platformVersion) {
    if (const yStatus fault = yFault_Check("xyAssembly_ConstructInternal"); fault != yOK) {
        return fault;
    }
    if (global == nullptr || name == nullptr) {
        return yERROR_PARAMETER;
    }
    if (*global != nullptr) {
        return yERROR_ALREADY_EXISTS;
    }
    *global = new yAssemblyObject{global, name, version, platformVersion};
    return yOK;
}

yStatus xyAssembly_AddDependency(yAssembly assembly, yAssemblyConstruct construct) {
    if (const yStatus fault = yFault_Check("xyAssembly_AddDependency"); fault != yOK) {
        return fault;
    }
    if (assembly == nullptr || construct == nullptr) {
        return yERROR_PARAMETER;
    }
    if (assembly->finalized) {
        return yERROR_STATE;
    }
    yAssembly dependency = nullptr;
    if (const yStatus status = construct(&dependency); status != yOK) {
        return status;
    }
    assembly->dependencies.push_back(dependency);
    return yOK;
}

yStatus xyAssembly_Finalize(yAssembly assembly) {
    if (const yStatus fault = yFault_Check("xyAssembly_Finalize"); fault != yOK) {
        return fault;
    }
    if (assembly == nullptr) {
        return yERROR_PARAMETER;
    }
    if (assembly->finalized) {
        return yERROR_STATE;
    }
    assembly->finalized = true;
    return yOK;
}

yStatus xyAssembly_VRelease(yAssembly assembly) {
    if (assembly == nullptr || assembly->references.fetch_sub(1, std::memory_order_acq_rel) > 1) {
        return yOK;
    }
    for (yAssembly dependency : std::ranges::reverse_view(assembly->dependencies)) {
        xyAssembly_VRelease(dependency);
    }
    *assembly->global = nullptr;
    delete assembly;
    return yOK;
}

void yAssembly_AddReference(yAssembly assembly) {
    assembly->references.fetch_add(1, std::memory_order_relaxed);
}

std::int32_t yAssembly_ReferenceCount(yAssembly assembly) {
    return assembly == nullptr ? 0 : assembly->references.load(std::memory_order_acquire);
}

const char* yAssembly_Name(yAssembly assembly) {
    return assembly->name.c_str();
}

const yVersion& yAssembly_Version(yAssembly assembly) {
    return assembly->version;
}

const yVersion& yAssembly_PlatformVersion(yAssembly assembly) {
    return assembly->platformVersion;
}

bool yAssembly_IsFinalized(yAssembly assembly) {
    return assembly->finalized;
}

std::size_t yAssembly_DependencyCount(yAssembly assembly) {
    return assembly->dependencies.size();
}

yAssembly yAssembly_DependencyAt(yAssembly assembly, std::size_t index) {
    return index < assembly->dependencies.size() ? assembly->dependencies[index] : nullptr;
}
