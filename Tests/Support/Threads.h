#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>

namespace Tests {

/// The name of the thread on which a service gets its scan results.
inline constexpr const char* ScanResultsThread = "CtrlScnRstDisp";

/// The number of threads of this process with the name, but for those that are at their end: the kernel lists a thread
/// for a moment after it was joined.
inline std::size_t CountThreads(const std::string& name) {
    constexpr unsigned long Exiting = 4; // PF_EXITING of the kernel
    std::size_t count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "stat");
        std::string line;
        std::getline(file, line);
        // "42 (name) S 1 1 1 0 -1 FLAGS ...": proc(5)
        const std::size_t begin = line.find('(');
        const std::size_t end = line.rfind(')');
        if (end == std::string::npos || line.substr(begin + 1, end - begin - 1) != name) {
            continue;
        }
        std::istringstream rest(line.substr(end + 1));
        std::string field;
        for (int i = 0; i < 6; ++i) {
            rest >> field;
        }
        unsigned long flags = 0;
        rest >> flags;
        count += (flags & Exiting) == 0 ? 1 : 0;
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
