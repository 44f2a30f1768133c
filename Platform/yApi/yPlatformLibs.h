#pragma once

#include "yApi/yAssembly.h"

/// Construct functions of the platform's own assemblies: the first call makes the assembly, each later one adds a
/// reference to it. The caller owns the reference.
extern "C" {
yStatus yApiLib_Construct(yAssembly* assembly);
yStatus yTsLib_Construct(yAssembly* assembly);
yStatus VcLib_Construct(yAssembly* assembly);
yStatus VorCoreLib_Construct(yAssembly* assembly);
yStatus VorApiLib_Construct(yAssembly* assembly);
}
