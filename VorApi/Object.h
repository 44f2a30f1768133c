#pragma once

#include "yApi/yObject.h"

#include <utility>

namespace Vor {

/// One share of a shared object, given up at destruction.
class Object {
public:
    Object() = default;

    /// Adopts a share that the caller has.
    static Object Take(void* handle) { return Object(handle); }
    /// Adds a share; the caller keeps its own.
    static Object Share(void* handle) { return Object(yObject_Share(handle)); }

    Object(const Object& other)
        : handle(yObject_Share(other.handle)) {}
    Object(Object&& other) noexcept
        : handle(std::exchange(other.handle, nullptr)) {}
    Object& operator=(Object other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    ~Object() { yObject_Release(handle); }

    /// Borrowed; null for an empty object.
    void* Get() const { return handle; }
    explicit operator bool() const { return handle != nullptr; }

    /// Hands the share to the caller and leaves the object empty.
    void* Release() { return std::exchange(handle, nullptr); }

    /// For construct functions, which store a new object with its one share: gives up what was held.
    void** Out() {
        yObject_Release(std::exchange(handle, nullptr));
        return &handle;
    }

private:
    explicit Object(void* handle)
        : handle(handle) {}

    void* handle = nullptr;
};

} // namespace Vor
