#pragma once

#include "VorApi/LogThrown.h"

#include <utility>

namespace Vor {

/// Holds for a scope what a pair of member functions of `Object` brackets.
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

    /// Ends it before the scope does. Throws what `End` throws; the destructor logs it.
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
