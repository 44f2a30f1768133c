#pragma once

#include "Vor/Exception.h"
#include "VorApi/Handle.h"
#include "yApi/yThread.h"

#include <functional>
#include <utility>

namespace Vor {

/// Owns a thread with a name. Without a function it is empty and has no thread.
class NamedThread {
public:
    NamedThread() = default;

    /// Starts the thread. Throws the status if it can't be constructed, named or started.
    NamedThread(const char* name, std::function<yStatus()> function) {
        ThrowIfFailed(yThread_Construct(thread.Out(), std::move(function)));
        ThrowIfFailed(yThread_SetName(thread.Get(), name));
        ThrowIfFailed(yThread_Start(thread.Get()));
    }

    explicit operator bool() const { return static_cast<bool>(thread); }

    /// Waits for the function's end and returns its status. Throws `yERROR_STATE` for a thread that was joined before,
    /// and on the thread itself.
    yStatus Join() {
        yStatus exit = yOK;
        ThrowIfFailed(yThread_Join(thread.Get(), yINFINITE, &exit));
        return exit;
    }

    /// Waits for the function's end unless the thread was joined, and becomes empty. The destructor does the same.
    void Reset() { thread.Reset(); }

private:
    Handle<yThread, yThread_Destroy> thread;
};

} // namespace Vor
