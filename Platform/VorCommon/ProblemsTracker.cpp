#include "VorCommon/ProblemsTracker.h"

#include <utility>

namespace VorCommon {

ProblemsTracker::ProblemsTracker(ProblemsManager* manager, std::string owner)
    : manager(manager)
    , owner(std::move(owner)) {}

ProblemsTracker::~ProblemsTracker() {
    Begin();
    End();
}

void ProblemsTracker::Begin() {
    const std::lock_guard lock(mutex);
    open = true;
    earlier.merge(current);
}

void ProblemsTracker::Register(ProblemsManager::Handle problem) {
    const std::lock_guard lock(mutex);
    earlier.erase(problem);
    current.insert(problem);
    if (manager != nullptr) {
        manager->SetOwner(problem, owner);
    }
}

void ProblemsTracker::End() {
    const std::lock_guard lock(mutex);
    if (!open) {
        return;
    }
    open = false;
    for (const auto problem : earlier) {
        if (manager != nullptr) {
            manager->Remove(problem);
        }
    }
    earlier.clear();
}

} // namespace VorCommon
