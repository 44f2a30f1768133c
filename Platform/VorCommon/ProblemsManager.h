#pragma once

#include "Vor/Format.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace VorCommon {

/// The list of problems shown to the user. From any thread.
class ProblemsManager {
public:
    using Handle = std::uint64_t;

    struct Problem {
        Handle handle = 0;
        /// 0 warns, 1 is a failure.
        int severity = 0;
        std::string title;
        std::string text;
    };

    /// Lists a problem and gives its handle, which is never 0; equal problems are listed once each time.
    template <typename... Args>
    Handle Add(int severity, const char* title, const char* format, const Args&... args) {
        return AddText(severity, title, Vor::Format(format, args...));
    }
    /// An unknown handle is ignored.
    void Remove(Handle handle);

    /// In order of adding.
    std::vector<Problem> List() const;

private:
    Handle AddText(int severity, const char* title, std::string text);

    /// Guards the list and the counter; nothing else is locked under it.
    mutable std::mutex mutex;
    std::map<Handle, Problem> problems;
    Handle lastHandle = 0;
};

} // namespace VorCommon
