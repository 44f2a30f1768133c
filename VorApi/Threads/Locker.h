#pragma once

#include "VorApi/LogThrown.h"
#include "yApi/yLock.h"

namespace Vor {

/// Holds a lock for a scope. A failure to enter it is thrown with its status; a failure to leave it is logged.
class Locker {
public:
    explicit Locker(yLock lock)
        : lock(lock) {
        ThrowIfFailed(yLock_Enter(lock));
    }

    Locker(const Locker&) = delete;
    Locker& operator=(const Locker&) = delete;

    ~Locker() {
        if (const yStatus status = yLock_Exit(lock); status != yOK) {
            LogFailure(status);
        }
    }

private:
    yLock lock;

    [[gnu::cold, gnu::noinline]] static void LogFailure(yStatus status) noexcept {
        CleanUp([status] { ThrowIfFailed(status); });
    }
};

} // namespace Vor
