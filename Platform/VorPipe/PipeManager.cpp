#include "VorPipe/PipeManager.h"

#include "Vor/Exception.h"

#include <utility>

namespace VorPipe {

void PipeManager::Add(const PipeOutput& output) {
    {
        const std::lock_guard guard(mutex);
        if (!outputs.try_emplace(output.name, output).second) {
            Vor::Throw(yERROR_ALREADY_EXISTS, "There is a data source '%s' already.", output.name);
        }
    }
    created.Raise(output.name);
}

void PipeManager::Update(PipeOutput output) {
    const std::string name = output.name;
    {
        const std::lock_guard guard(mutex);
        Find(name);
        outputs[name] = std::move(output);
    }
    updated.Raise(name);
}

void PipeManager::Remove(const std::string& name) {
    {
        const std::lock_guard guard(mutex);
        Find(name);
    }
    try {
        deleted.Raise(name);
    } catch (...) {
        Forget(name);
        throw;
    }
    Forget(name);
}

void PipeManager::Forget(const std::string& name) {
    const std::lock_guard guard(mutex);
    outputs.erase(name);
}

std::vector<std::string> PipeManager::List() const {
    const std::lock_guard guard(mutex);
    std::vector<std::string> names;
    for (const auto& [name, output] : outputs) {
        names.push_back(name);
    }
    return names;
}

PipeOutput PipeManager::Output(const std::string& name) const {
    const std::lock_guard guard(mutex);
    return Find(name)->second;
}

PipeManager::Outputs::const_iterator PipeManager::Find(const std::string& name) const {
    const auto found = outputs.find(name);
    if (found == outputs.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no data source '%s'.", name);
    }
    return found;
}

} // namespace VorPipe
