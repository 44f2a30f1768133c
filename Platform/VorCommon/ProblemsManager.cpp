#include "VorCommon/ProblemsManager.h"

#include <utility>

namespace VorCommon {

ProblemsManager::Handle ProblemsManager::AddText(int severity, const char* title, std::string text) {
    const std::lock_guard lock(mutex);
    const Handle handle = ++lastHandle;
    problems.emplace(handle, Problem{handle, severity, title == nullptr ? "" : title, std::move(text)});
    return handle;
}

void ProblemsManager::SetOwner(Handle handle, const std::string& owner) {
    const std::lock_guard lock(mutex);
    if (const auto problem = problems.find(handle); problem != problems.end()) {
        problem->second.owner = owner;
    }
}

void ProblemsManager::Remove(Handle handle) {
    const std::lock_guard lock(mutex);
    problems.erase(handle);
}

std::vector<ProblemsManager::Problem> ProblemsManager::List() const {
    const std::lock_guard lock(mutex);
    std::vector<Problem> list;
    list.reserve(problems.size());
    for (const auto& [handle, problem] : problems) {
        list.push_back(problem);
    }
    return list;
}

} // namespace VorCommon
