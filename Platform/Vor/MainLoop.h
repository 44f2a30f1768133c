#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

namespace Vor {

/// The application's side of the main loop: makes the calling thread the main loop's, and runs it. At most one lives at
/// a time; a second one throws -987. What is still queued at its destruction waits for the next one.
class MainLoop {
public:
    enum class Mode {
        /// Run drives the loop with the clock of the system.
        Running,
        /// The owner drives it step by step, with a clock that only Advance and Elapse move.
        Manual
    };

    explicit MainLoop(Mode mode = Mode::Running);
    ~MainLoop();
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    /// Runs closures, timers and events, in order, until Stop. What they throw is logged, and the loop goes on. The
    /// calling thread is the main loop's from here on.
    void Run();
    /// Makes Run return after the call that is running now. While nobody runs the loop, it makes the next Run return at
    /// once. From any thread.
    void Stop();

    /// Queues a closure. From any thread.
    void Post(std::function<void()> call);

    /// Manual mode. Each makes the calling thread the main loop's.
    /// Runs the oldest ready closure or event; false when there was none.
    bool Step();
    /// Runs what is ready, and what becomes ready by it. Returns the number of calls.
    std::size_t RunReady();
    /// Moves the clock on, running what is ready and each timer at its time. Returns the number of calls.
    std::size_t Advance(std::chrono::microseconds time);
    /// Moves the clock on and runs nothing, as if the loop were busy. RunAndWait of other threads follows this clock,
    /// so it is how their waits time out.
    void Elapse(std::chrono::microseconds time);
    /// Waits, in real time, for something to become ready; false when nothing did.
    bool WaitReady(std::chrono::milliseconds deadline = std::chrono::seconds(10));

private:
    Mode mode;
};

} // namespace Vor
