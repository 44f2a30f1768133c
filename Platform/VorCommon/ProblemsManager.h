#pragma once

#include "Vor/Format.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace VorCommon {

/// The list of problems that the user sees. Called on any thread.
class ProblemsManager {
public:
    using Handle = std::uint64_t;

    struct Problem {
        Handle handle = 0;
        int severity = 0; ///< 0 warning, 1 failure
        std::string title;
        std::string text;
        std::string owner = {}; ///< the id of the service whose problem it is; empty when nobody has claimed it
    };

    /// Adds a problem and returns its handle, which is never 0. Equal problems are separate entries.
    template <typename... Args>
    Handle Add(int severity, const char* title, const char* format, const Args&... args) {
        return AddText(severity, title, Vor::Format(format, args...));
    }
    /// Says whose problem it is. An unknown handle is ignored.
    void SetOwner(Handle handle, const std::string& owner);
    /// An unknown handle is ignored.
    void Remove(Handle handle);

    /// In order of adding.
    std::vector<Problem> List() const;

private:
    Handle AddText(int severity, const char* title, std::string text);

    /// Guards the members below. No other lock is taken while it is held.
    mutable std::mutex mutex;
    std::map<Handle, Problem> problems;
    Handle lastHandle = 0;
};

} // namespace VorCommon
