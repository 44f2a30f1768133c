#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

// Counts the allocations of the program that includes this, in one source.

namespace Tests {

inline thread_local std::size_t allocations = 0;

/// The number of allocations of this thread during the call.
template <class Call>
std::size_t AllocationsOf(const Call& call) {
    const std::size_t before = allocations;
    call();
    return allocations - before;
}

} // namespace Tests

// Not inlined, since the compiler would see a call of free after one of new.
[[gnu::noinline]] void* operator new(std::size_t size) {
    ++Tests::allocations;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t alignment) {
    ++Tests::allocations;
    const auto unit = static_cast<std::size_t>(alignment);
    if (void* const memory = std::aligned_alloc(unit, (size + unit - 1) / unit * unit)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
