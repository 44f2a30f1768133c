#include "VorCommon/ProblemsTracker.h"

namespace VorCommon {

ProblemsTracker::ProblemsTracker(ProblemsManager* manager)
    : manager(manager) {}

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
