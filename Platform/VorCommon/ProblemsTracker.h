#pragma once

#include "VorCommon/ProblemsManager.h"

#include <mutex>
#include <set>
#include <string>

namespace VorCommon {

/// The problems that one owner has raised, by run: the end of a run removes those of earlier runs that weren't
/// registered in this one. No lock is held between the calls.
class ProblemsTracker {
public:
    /// The manager is borrowed and may be null. `owner` is the id of the service whose problems they are.
    explicit ProblemsTracker(ProblemsManager* manager, std::string owner = std::string());
    /// Removes all its problems.
    ~ProblemsTracker();
    ProblemsTracker(const ProblemsTracker&) = delete;
    ProblemsTracker& operator=(const ProblemsTracker&) = delete;

    /// Begins a run; one that wasn't ended counts as an earlier one.
    void Begin();
    void Register(ProblemsManager::Handle problem);
    /// Without a run it does nothing.
    void End();

private:
    ProblemsManager* const manager;
    const std::string owner;
    /// Guards the rest; ranks before the manager's.
    std::mutex mutex;
    bool open = false;
    std::set<ProblemsManager::Handle> earlier;
    std::set<ProblemsManager::Handle> current;
};

} // namespace VorCommon
