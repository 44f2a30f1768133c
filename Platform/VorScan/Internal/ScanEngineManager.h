#pragma once

#include "VorScan/Internal/ScanEngineInstance.h"

#include <memory>
#include <string>
#include <vector>

namespace VorScan::Internal {

/// Owns the scan engines. Main loop only.
class ScanEngineManager {
public:
    /// Under the engine's id. Throws yERROR_ALREADY_EXISTS.
    void Add(std::unique_ptr<ScanEngineInstance> engine);

    /// Ids in order of adding.
    std::vector<std::string> List() const;
    /// Throws yERROR_NOT_FOUND.
    ScanEngineInstance& GetInstance(const std::string& id);

private:
    /// Null if there is none.
    ScanEngineInstance* Find(const std::string& id) const;

    std::vector<std::unique_ptr<ScanEngineInstance>> engines;
};

} // namespace VorScan::Internal
