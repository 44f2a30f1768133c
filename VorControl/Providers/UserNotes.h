#pragma once

#include "Vor/Logging.h"

#include <string>
#include <thread>
#include <vector>

namespace VorControl::Providers {

/// What an operation has to report to its caller: the entries that its thread writes to the user's log as long as this
/// lives, and what is added. Each text once, in the order of their making.
class UserNotes {
public:
    UserNotes();
    ~UserNotes();
    UserNotes(const UserNotes&) = delete;
    UserNotes& operator=(const UserNotes&) = delete;

    void Add(const std::string& text);
    const std::vector<std::string>& Texts() const { return texts; }

private:
    const std::thread::id thread = std::this_thread::get_id();
    std::vector<std::string> texts;
    Vor::Logging::UserHandlerId handler;
};

} // namespace VorControl::Providers
