#pragma once

#include "yApi/yStatus.h"
#include "yApi/yVersion.h"

#include <cstddef>
#include <cstdint>

/// The loader's object of one library, reference counted. A library keeps its one assembly in a global variable, which
/// is null while the assembly doesn't exist. Construction and release run on the loader's thread; only the reference
/// count may change on any thread.
using yAssembly = struct yAssemblyObject*;

using yAssemblyConstruct = yStatus (*)(yAssembly* assembly);

/// Makes an assembly with one reference and stores it in `*global`, whose address the assembly keeps.
yStatus xyAssembly_ConstructInternal(yAssembly* global, const char* name, const yVersion& version,
                                     const yVersion& platformVersion);
/// Calls `construct` and owns the reference that it makes. `yERROR_STATE` after the assembly was finalized.
yStatus xyAssembly_AddDependency(yAssembly assembly, yAssemblyConstruct construct);
/// The last step of construction.
yStatus xyAssembly_Finalize(yAssembly assembly);
/// Releases one reference. The last one releases the dependencies, last added first, sets the global to null and
/// destroys the assembly. Null is legal.
yStatus xyAssembly_VRelease(yAssembly assembly);

/// Atomically adds one reference.
void yAssembly_AddReference(yAssembly assembly);
/// 0 for null.
std::int32_t yAssembly_ReferenceCount(yAssembly assembly);

const char* yAssembly_Name(yAssembly assembly);
const yVersion& yAssembly_Version(yAssembly assembly);
const yVersion& yAssembly_PlatformVersion(yAssembly assembly);
bool yAssembly_IsFinalized(yAssembly assembly);
std::size_t yAssembly_DependencyCount(yAssembly assembly);
yAssembly yAssembly_DependencyAt(yAssembly assembly, std::size_t index);
