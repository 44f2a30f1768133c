#pragma once

#include "yApi/yObject.h"

#include <utility>

namespace Vor {

/// One share of a shared object, released at destruction.
class Object {
public:
    Object() = default;

    /// Takes over a share of the caller.
    static Object Adopt(void* handle) { return Object(handle); }
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

    /// Doesn't add a share. Null for an empty object.
    void* Get() const { return handle; }
    explicit operator bool() const { return handle != nullptr; }

    /// Passes the share to the caller and leaves the object empty.
    void* Release() { return std::exchange(handle, nullptr); }

    /// The address at which a construct function stores the new object with its one share. Releases the present one.
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
