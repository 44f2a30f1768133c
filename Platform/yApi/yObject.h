#pragma once

#include "yApi/yMemory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

/// Run-time type of shared objects. Each class has one static instance, which is compared by address.
struct yType {
    const yType* parent; ///< null for a class without a base
    void (*destroy)(void* handle);
    /// Returns the object inside which this one lives and which counts its shares. Null for a class without such
    /// objects.
    void* (*owner)(const void* handle) = nullptr;
};

/// Base of every shared object. Users hold `void*` handles, which point to this base; a new object has one share.
/// Share counts change atomically; all else of an object is read-only once other threads can reach it.
class yObject {
public:
    yObject(const yObject&) = delete;
    yObject& operator=(const yObject&) = delete;

    const yType* const type;
    std::atomic<std::int32_t> shares{1};
    const bool owned; ///< lives inside another object, which `yType::owner` returns

protected:
    explicit yObject(const yType& type, bool owned = false)
        : type(&type)
        , owned(owned) {}
    ~yObject() = default;
};

/// Adds a share and returns the handle. Null is legal and does nothing. An object that lives inside another one, such
/// as the item of a result set, shares its owner.
inline void* yObject_Share(void* handle) {
    if (handle == nullptr) {
        return nullptr;
    }
    auto* object = static_cast<yObject*>(handle);
    if (object->owned) [[unlikely]] {
        object = static_cast<yObject*>(object->type->owner(handle));
    }
    object->shares.fetch_add(1, std::memory_order_relaxed);
    return handle;
}

/// Releases a share; the last one destroys the object. Null is legal and does nothing.
inline void yObject_Release(void* handle) {
    if (handle == nullptr) {
        return;
    }
    auto* object = static_cast<yObject*>(handle);
    if (object->owned) [[unlikely]] {
        object = static_cast<yObject*>(object->type->owner(handle));
    }
    if (object->shares.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        object->type->destroy(object);
    }
}

/// Whether the object is of `type` or of a class derived from it. Null is never an instance.
inline bool yObject_Is(const void* handle, const yType& type) {
    if (handle == nullptr) {
        return false;
    }
    for (const auto* own = static_cast<const yObject*>(handle)->type; own != nullptr; own = own->parent) {
        if (own == &type) {
            return true;
        }
    }
    return false;
}

/// The object's own class. The handle isn't null.
inline const yType& yObject_Type(const void* handle) {
    return *static_cast<const yObject*>(handle)->type;
}

/// The default allocator of a class's objects.
yAllocator yType_Allocator(const yType& type);

/// Shares of the object (of its owner, for one that lives inside another), 0 for null. For tests.
std::int32_t yObject_ShareCount(const void* handle);
/// Number of shared objects that exist in the process. For leak checks.
std::int64_t yObject_LiveCount();

void yObject_CountMade();
void yObject_CountDestroyed();

/// For the authors of shared classes: makes a `T`, whose first base is yObject and which keeps its allocator in
/// `T::allocator`.
template <class T, class... Args>
T* yObject_New(yAllocator allocator, Args&&... args) {
    void* memory = yMemory_Allocate(allocator, sizeof(T));
    try {
        auto* made = new (memory) T(allocator, std::forward<Args>(args)...);
        yObject_CountMade();
        return made;
    } catch (...) {
        yMemory_Free(allocator, memory, sizeof(T));
        throw;
    }
}

/// The handle of an object.
inline void* yObject_ToHandle(yObject* object) {
    return object;
}
/// The object of a handle, which must be a `T`.
template <class T>
T* yObject_As(void* handle) {
    return static_cast<T*>(static_cast<yObject*>(handle));
}

/// The `destroy` of a class made by `yObject_New`.
template <class T>
void yObject_Delete(void* handle) {
    auto* object = yObject_As<T>(handle);
    const yAllocator allocator = object->allocator;
    object->~T();
    yMemory_Free(allocator, object, sizeof(T));
    yObject_CountDestroyed();
}
