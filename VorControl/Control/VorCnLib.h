#pragma once

#include "yApi/yAssembly.h"

/// The library's one assembly object, null while it doesn't exist.
extern "C" yAssembly xxVorCnLib_assembly;

extern "C" {
/// Makes the assembly, or adds a reference to the existing one. On failure nothing is left of it, and `assembly` is
/// unchanged. Runs on the loader's thread.
yStatus VorCnLib_Construct(yAssembly* assembly);

yStatus yPlugin_ConstructAssembly(yAssembly* assembly);
/// "1.0.0.0", as yPlugin_PlatformVersion().
const char* yPlugin_AssemblyVersion();
const char* yPlugin_PlatformVersion();
}
