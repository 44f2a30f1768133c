#include "yApi/yMemory.h"

#include "yApi/yFault.h"

#include <cstring>
#include <memory_resource>
#include <new>

void* yMemory_Allocate(yAllocator allocator, std::size_t size) {
    if (allocator == nullptr) {
        return ::operator new(size);
    }
    return static_cast<std::pmr::memory_resource*>(allocator)->allocate(size);
}

void yMemory_Free(yAllocator allocator, void* memory, std::size_t size) {
    if (allocator == nullptr) {
        ::operator delete(memory);
    } else {
        static_cast<std::pmr::memory_resource*>(allocator)->deallocate(memory, size);
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
