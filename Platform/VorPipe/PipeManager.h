#pragma once

#include "VorApi/Threads/LockedEvent.h"
#include "VorPipe/PipeOutput.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace VorPipe {

/// The data sources of the running tools. They are added, updated and removed on the main loop, where the events are
/// raised, too, without the lock; they may be read on any thread. The caller gets what a handler of an event throws;
/// the change is made all the same.
class PipeManager {
public:
    /// Raises the created event. Throws yERROR_ALREADY_EXISTS.
    void Add(const PipeOutput& output);
    /// Raises the updated event. Throws yERROR_NOT_FOUND.
    void Update(PipeOutput output);
    /// Raises the deleted event while the output is still known, then forgets it. Throws yERROR_NOT_FOUND.
    void Remove(const std::string& name);

    /// Names in alphabetical order.
    std::vector<std::string> List() const;
    /// Throws yERROR_NOT_FOUND.
    PipeOutput Output(const std::string& name) const;

    Vor::LockedEvent<std::string>& OutputCreatedEvent() { return created; }
    Vor::LockedEvent<std::string>& OutputDeletedEvent() { return deleted; }
    Vor::LockedEvent<std::string>& OutputUpdatedEvent() { return updated; }

private:
    using Outputs = std::map<std::string, PipeOutput>;

    void Forget(const std::string& name);
    /// Called with `mutex` held. Throws yERROR_NOT_FOUND.
    Outputs::const_iterator Find(const std::string& name) const;

    /// Guards `outputs`. No event is raised and no other lock taken while it is held.
    mutable std::mutex mutex;
    Outputs outputs;
    Vor::LockedEvent<std::string> created;
    Vor::LockedEvent<std::string> deleted;
    Vor::LockedEvent<std::string> updated;
};

} // namespace VorPipe
