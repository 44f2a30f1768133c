#pragma once

#include "yApi/yStatus.h"

#include <cstddef>

/// A source of memory: null is the process's heap, anything else a `std::pmr::memory_resource*`, which must be safe to
/// use from several threads and must outlive all that was made with it. Running out of memory throws std::bad_alloc.
using yAllocator = void*;

/// `alignment` is a power of two; freeing has the same one.
void* yMemory_Allocate(yAllocator allocator, std::size_t size, std::size_t alignment = alignof(std::max_align_t));
void yMemory_Free(yAllocator allocator, void* memory, std::size_t size,
                  std::size_t alignment = alignof(std::max_align_t));

/// A size of 0 is legal with any pointer; a null pointer with another size is `yERROR_PARAMETER`.
yStatus yMemSet(void* destination, int value, std::size_t size);
/// As `yMemSet`. The ranges must not overlap.
yStatus yMemCopy(void* destination, const void* source, std::size_t size);
