#pragma once

#include <utility>

namespace Vor {

/// Owner of a plain resource such as a lock, a thread or a list: `Handle<yLock, yLock_Destroy>`.
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

    /// For construct functions, which store the new resource: destroys what was held.
    Resource* Out() {
        Reset();
        return &resource;
    }

private:
    Resource resource = nullptr;
};

} // namespace Vor
