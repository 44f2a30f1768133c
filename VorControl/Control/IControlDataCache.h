#pragma once

#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/IControlSystemInterface.h"

#include <string>

namespace VorControl {

/// State of the system and of a scanner for any thread. A call waits at most `timeout` microseconds for the main loop
/// and returns the last good copy; with 0 it returns what the query of the previous call read. On the main loop itself
/// the state is read at once, without a wait.
class IControlDataCache {
public:
    virtual ~IControlDataCache() = default;

    virtual IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) = 0;
    /// With an empty id the copy may be of any scanner. Throws yERROR_NOT_FOUND while the copy is of another scanner.
    virtual IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                                      unsigned long long timeout) = 0;
};

} // namespace VorControl
