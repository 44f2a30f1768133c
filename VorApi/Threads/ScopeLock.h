#pragma once

#include "VorApi/LogThrown.h"

#include <utility>

namespace Vor {

/// Calls `Begin` of an object, and `End` at the end of the scope.
template <class Object, auto Begin, auto End>
class ScopeLock {
public:
    /// Throws what `Begin` throws.
    explicit ScopeLock(Object& object)
        : object(&object) {
        (object.*Begin)();
    }
    ScopeLock(const ScopeLock&) = delete;
    ScopeLock& operator=(const ScopeLock&) = delete;

    /// Calls `End` before the end of the scope and throws what it throws; the destructor logs that.
    void Unlock() { (std::exchange(object, nullptr)->*End)(); }

    ~ScopeLock() {
        if (object != nullptr) {
            CleanUp([this] { Unlock(); });
        }
    }

private:
    Object* object;
};

} // namespace Vor
