#pragma once

#include "VorApi/Threads/LockedEvent.h"
#include "VorPipe/PipeOutput.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace VorPipe {

/// Knows the data sources of the running tools. Outputs are added, updated and removed on the main loop, where the
/// events are raised, too, without the lock; reads may come from any thread. What a handler throws passes on, and the
/// change is made all the same.
class PipeManager {
public:
    /// Raises the created event. Throws yERROR_ALREADY_EXISTS.
    void Add(const PipeOutput& output);
    /// Raises the updated event. Throws yERROR_NOT_FOUND.
    void Update(PipeOutput output);
    /// Raises the deleted event while the output is still known, then forgets it. Throws yERROR_NOT_FOUND.
    void Remove(const std::string& name);

    /// Names in order of the alphabet.
    std::vector<std::string> List() const;
    /// Throws yERROR_NOT_FOUND.
    PipeOutput Output(const std::string& name) const;

    Vor::LockedEvent<std::string>& OutputCreatedEvent() { return created; }
    Vor::LockedEvent<std::string>& OutputDeletedEvent() { return deleted; }
    Vor::LockedEvent<std::string>& OutputUpdatedEvent() { return updated; }

private:
    using Outputs = std::map<std::string, PipeOutput>;

    void Forget(const std::string& name);
    /// With `mutex` held. Throws yERROR_NOT_FOUND.
    Outputs::const_iterator Find(const std::string& name) const;

    /// Guards `outputs`. A leaf: no event is raised under it.
    mutable std::mutex mutex;
    Outputs outputs;
    Vor::LockedEvent<std::string> created;
    Vor::LockedEvent<std::string> deleted;
    Vor::LockedEvent<std::string> updated;
};

} // namespace VorPipe
