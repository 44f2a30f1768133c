#pragma once

#include "yApi/yObject.h"

#include <cstdint>

/// A shared object that carries a plain pointer. It never frees what the pointer points to.
using PointerWrapper = void*;

extern const yType yType_PointerWrapper;

/// `options` is 0.
yStatus PointerWrapper_Construct(PointerWrapper* wrapper, void* pointer, std::uint32_t options,
                                 yAllocator allocator = nullptr);
/// Null for a null wrapper.
void* PointerWrapper_Pointer(PointerWrapper wrapper);
