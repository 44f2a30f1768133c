#include "VorScan/Internal/ScanEngineManager.h"

#include "Vor/Exception.h"

#include <algorithm>
#include <utility>

namespace VorScan::Internal {

void ScanEngineManager::Add(std::unique_ptr<ScanEngineInstance> engine) {
    if (Find(engine->Id()) != nullptr) {
        Vor::Throw(yERROR_ALREADY_EXISTS, "There is a scan engine %s already.", engine->Id());
    }
    engines.push_back(std::move(engine));
}

std::vector<std::string> ScanEngineManager::List() const {
    std::vector<std::string> ids;
    ids.reserve(engines.size());
    for (const auto& engine : engines) {
        ids.push_back(engine->Id());
    }
    return ids;
}

ScanEngineInstance& ScanEngineManager::GetInstance(const std::string& id) {
    ScanEngineInstance* const engine = Find(id);
    if (engine == nullptr) {
        Vor::Throw(yERROR_NOT_FOUND, "There is no scan engine %s.", id);
    }
    return *engine;
}

ScanEngineInstance* ScanEngineManager::Find(const std::string& id) const {
    const auto found =
        std::find_if(engines.begin(), engines.end(), [&](const auto& engine) { return engine->Id() == id; });
    return found == engines.end() ? nullptr : found->get();
}

} // namespace VorScan::Internal
