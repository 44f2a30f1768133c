#pragma once

#include "VorApi/Threads/NamedThread.h"

#include <chrono>
#include <csignal>
#include <functional>

namespace Sensor {

/// Handles SIGINT, SIGTERM and SIGHUP on a thread of its own, named "Signals". Construct it before any other thread is
/// started, so that the signals are blocked in all of them.
class SignalWatch {
public:
    /// `stop` is called once, at the first SIGINT or SIGTERM, and `overdue` when this still exists `patience` later.
    /// `hangUp` is called at each SIGHUP. All are called on the thread "Signals". Throws a Vor::Exception.
    SignalWatch(std::function<void()> stop, std::chrono::milliseconds patience, std::function<void()> overdue,
                std::function<void()> hangUp);
    /// Waits for the end of a running call, and unblocks the signals.
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// Has the effect of SIGTERM. For any thread.
    void Trigger();

private:
    /// A file descriptor, closed at destruction.
    class Descriptor {
    public:
        explicit Descriptor(int descriptor);
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        int Get() const { return descriptor; }

    private:
        int descriptor;
    };

    /// Blocks the signals in the calling thread, and in the threads that it starts, during its lifetime.
    class Block {
    public:
        Block();
        ~Block();
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;
        const sigset_t& Signals() const { return signals; }

    private:
        sigset_t signals;
        sigset_t former;
    };

    yStatus Run();
    /// Waits for a signal, at most for the time. Returns whether it was one to stop. `ending` is set when the
    /// destructor runs, which ends the wait.
    bool WaitForStop(int timeoutMilliseconds, bool& ending);

    const std::function<void()> stop;
    const std::chrono::milliseconds patience;
    const std::function<void()> overdue;
    const std::function<void()> hangUp;
    Block block;
    Descriptor signalled;
    Descriptor ended;
    Vor::NamedThread thread; ///< the last member: it uses the others until it has ended
};

} // namespace Sensor
