#pragma once

#include "VorCommon/IUpdateGate.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace VorCommon {

class UpdateGate final : public IUpdateGate {
public:
    /// A thread that waits longer than this logs an error, once, and goes on waiting.
    explicit UpdateGate(std::chrono::milliseconds patience = std::chrono::seconds(5));

    void Enter(int flag) override;
    /// Throws -1000 when the calling thread isn't inside.
    void Leave(int flag) override;

    /// How often its holder has entered the gate, 0 when it is free.
    int Depth() const;
    bool HeldByThisThread() const;

private:
    const std::chrono::milliseconds patience;
    /// Guards owner and depth, for a few instructions. No other lock is taken while it is held.
    mutable std::mutex mutex;
    std::condition_variable freed;
    std::thread::id owner;
    int depth = 0; ///< how often `owner` has entered
};

} // namespace VorCommon
