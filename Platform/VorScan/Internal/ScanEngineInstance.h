#pragma once

#include "VorScan/IScanEngine.h"
#include "VorScan/Internal/ScannerInstance.h"
#include "VorScan/ScanEngineInfo.h"

#include <memory>
#include <string>
#include <vector>

namespace VorScan::Internal {

/// A scan engine with its scanners. Main loop only.
class ScanEngineInstance {
public:
    ScanEngineInstance(std::string id, ScanEngineInfo info, std::unique_ptr<IScanEngine> engine);

    const std::string& Id() const { return id; }
    const ScanEngineInfo& Info() const { return info; }
    IScanEngine& Engine() { return *engine; }

    /// Throws yERROR_ALREADY_EXISTS for an id that another scanner has.
    void AddScanner(std::unique_ptr<ScannerInstance> scanner);
    /// Destroys the scanner. Throws yERROR_NOT_FOUND.
    void RemoveScanner(const std::string& scannerId);
    /// Ids in order of adding.
    std::vector<std::string> ListScanners() const;
    /// Throws yERROR_NOT_FOUND.
    ScannerInstance& FindScanner(const std::string& scannerId);

private:
    using Scanners = std::vector<std::unique_ptr<ScannerInstance>>;

    /// The end if there is none.
    Scanners::iterator PositionOf(const std::string& scannerId);
    /// Throws yERROR_NOT_FOUND.
    Scanners::iterator Locate(const std::string& scannerId);

    const std::string id;
    const ScanEngineInfo info;
    const std::unique_ptr<IScanEngine> engine;
    Scanners scanners;
};

} // namespace VorScan::Internal
