#include "yApi/yMemory.h"

#include "yApi/yFault.h"

#include <cstring>
#include <memory_resource>
#include <new>

void* yMemory_Allocate(yAllocator allocator, std::size_t size, std::size_t alignment) {
    if (allocator != nullptr) {
        return static_cast<std::pmr::memory_resource*>(allocator)->allocate(size, alignment);
    }
    return alignment > alignof(std::max_align_t) ? ::operator new(size, std::align_val_t{alignment})
                                                 : ::operator new(size);
}

void yMemory_Free(yAllocator allocator, void* memory, std::size_t size, std::size_t alignment) {
    if (allocator != nullptr) {
        static_cast<std::pmr::memory_resource*>(allocator)->deallocate(memory, size, alignment);
    } else if (alignment > alignof(std::max_align_t)) {
        ::operator delete(memory, std::align_val_t{alignment});
    } else {
        ::operator delete(memory);
    }
}

yStatus yMemSet(void* destination, int value, std::size_t size) {
    if (const yStatus fault = yFault_Check("yMemSet"); fault != yOK) {
        return fault;
    }
    if (size == 0) {
        return yOK;
    }
    if (destination == nullptr) {
        return yERROR_PARAMETER;
    }
    std::memset(destination, value, size);
    return yOK;
}

yStatus yMemCopy(void* destination, const void* source, std::size_t size) {
    if (const yStatus fault = yFault_Check("yMemCopy"); fault != yOK) {
        return fault;
    }
    if (size == 0) {
        return yOK;
    }
    if (destination == nullptr || source == nullptr) {
        return yERROR_PARAMETER;
    }
    std::memcpy(destination, source, size);
    return yOK;
}
