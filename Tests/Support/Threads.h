#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace Tests {

/// The name of the thread on which a service gets its scan results.
inline constexpr const char* ScanResultsThread = "CtrlScnRstDisp";

/// The number of threads of this process with the name.
inline std::size_t CountThreads(const std::string& name) {
    std::size_t count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string found;
        if (std::getline(file, found) && found == name) {
            ++count;
        }
    }
    return count;
}

/// Polls until `condition` is true; false at the deadline. For states without a notification.
inline bool WaitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace Tests
