#pragma once

#include "Tests/Support/Signal.h"
#include "Vor/AsyncLoop.h"

#include <gtest/gtest.h>

namespace Tests {

/// Returns when all events of the device loop that were enqueued before have run, also those whose receivers didn't
/// wait for them.
inline void WaitForLoop() {
    class Last : public Vor::IAsyncEventReceiver {
    public:
        ~Last() { Vor::AsyncLoop::MainLoop().DeregisterHandler(handle); }
        void ProcessEvent() override { ran.Set(); }

        Signal ran;
        const Vor::AsyncLoop::ReceiverHandle handle = Vor::AsyncLoop::MainLoop().RegisterHandler(*this);
    };
    Last last;
    Vor::AsyncLoop::MainLoop().EnqueueImmediate(last.handle);
    EXPECT_TRUE(last.ran.Wait());
}

} // namespace Tests
