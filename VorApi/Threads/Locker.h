#pragma once

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "yApi/yLock.h"

namespace Vor {

/// Holds a lock for a scope. A lock that can't be entered is thrown with its status; a failure to leave is logged.
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
        try {
            LogError("Exception thrown in destructor");
            ThrowIfFailed(status);
        } catch (const Exception& exception) {
            Exception::LogException(exception);
            Exception::LogBackTrace(exception);
        } catch (...) {
            // Logging itself failed; nobody is left to be told.
            return;
        }
    }
};

} // namespace Vor
