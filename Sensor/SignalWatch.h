#pragma once

#include "VorApi/Threads/NamedThread.h"

#include <chrono>
#include <csignal>
#include <functional>

namespace Sensor {

/// Catches SIGINT and SIGTERM on a thread of its own, named "Signals". To be made before any other thread, so that none
/// of them takes the signals instead.
class SignalWatch {
public:
    /// `stop` is called once, at the first of the signals; `overdue` when the watch still lives `patience` later. Both
    /// run on the thread of the watch. Throws a Vor::Exception.
    SignalWatch(std::function<void()> stop, std::chrono::milliseconds patience, std::function<void()> overdue);
    /// Waits for a call that is running, and lets the signals through again.
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

    /// Does what a signal does. From any thread.
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

    /// Keeps the signals from the calling thread, and from those that it makes, while it lives.
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
    bool WaitForSignal(int timeoutMilliseconds, bool& ending);

    const std::function<void()> stop;
    const std::chrono::milliseconds patience;
    const std::function<void()> overdue;
    Block block;
    Descriptor signalled;
    Descriptor ended;
    Vor::NamedThread thread; ///< the last member: it uses the others until it has ended
};

} // namespace Sensor
