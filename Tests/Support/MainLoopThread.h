#pragma once

#include "Vor/MainLoop.h"

#include <future>
#include <optional>
#include <thread>

namespace Tests {

/// Runs the main loop on a thread of its own during its lifetime.
class MainLoopThread {
public:
    MainLoopThread() {
        std::promise<void> ready;
        thread = std::thread([this, &ready] {
            loop.emplace();
            ready.set_value();
            loop->Run();
            loop.reset();
        });
        ready.get_future().wait();
    }

    ~MainLoopThread() {
        loop->Stop();
        thread.join();
    }

    MainLoopThread(const MainLoopThread&) = delete;
    MainLoopThread& operator=(const MainLoopThread&) = delete;

private:
    std::optional<Vor::MainLoop> loop;
    std::thread thread;
};

} // namespace Tests
