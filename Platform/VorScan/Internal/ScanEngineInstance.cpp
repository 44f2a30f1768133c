#include "VorScan/Internal/ScanEngineInstance.h"

#include "Vor/Exception.h"

#include <algorithm>
#include <utility>

namespace VorScan::Internal {

ScanEngineInstance::ScanEngineInstance(std::string id, ScanEngineInfo info, std::unique_ptr<IScanEngine> engine)
    : id(std::move(id))
    , info(std::move(info))
    , engine(std::move(engine)) {}

void ScanEngineInstance::AddScanner(std::unique_ptr<ScannerInstance> scanner) {
    if (PositionOf(scanner->Id()) != scanners.end()) {
        Vor::Throw(yERROR_ALREADY_EXISTS, "Scan engine %s has a scanner %s already.", id, scanner->Id());
    }
    scanners.push_back(std::move(scanner));
}

void ScanEngineInstance::RemoveScanner(const std::string& scannerId) {
    scanners.erase(Locate(scannerId));
}

std::vector<std::string> ScanEngineInstance::ListScanners() const {
    std::vector<std::string> ids;
    for (const auto& scanner : scanners) {
        ids.push_back(scanner->Id());
    }
    return ids;
}

ScannerInstance& ScanEngineInstance::FindScanner(const std::string& scannerId) {
    return **Locate(scannerId);
}

ScanEngineInstance::Scanners::iterator ScanEngineInstance::PositionOf(const std::string& scannerId) {
    return std::find_if(scanners.begin(), scanners.end(),
                        [&](const auto& scanner) { return scanner->Id() == scannerId; });
}

ScanEngineInstance::Scanners::iterator ScanEngineInstance::Locate(const std::string& scannerId) {
    const auto position = PositionOf(scannerId);
    if (position == scanners.end()) {
        Vor::Throw(yERROR_NOT_FOUND, "Scan engine %s has no scanner %s.", id, scannerId);
    }
    return position;
}

} // namespace VorScan::Internal
