#pragma once

#include <utility>

namespace Vor {

/// Owns a resource of the C-style interface, for example a lock: `Handle<yLock, yLock_Destroy>`.
template <class Resource, auto Destroy>
class Handle {
public:
    Handle() = default;
    Handle(Handle&& other) noexcept
        : resource(std::exchange(other.resource, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(resource, other.resource);
        return *this;
    }
    ~Handle() { Reset(); }

    Resource Get() const { return resource; }
    explicit operator bool() const { return resource != nullptr; }

    void Reset() {
        if (resource != nullptr) {
            Destroy(std::exchange(resource, nullptr));
        }
    }

    /// The address at which a construct function stores the new resource. Destroys the present one.
    Resource* Out() {
        Reset();
        return &resource;
    }

private:
    Resource resource = nullptr;
};

} // namespace Vor
