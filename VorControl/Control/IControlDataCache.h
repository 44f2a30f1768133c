#pragma once

#include "VorControl/Control/IControlScanEngineInterface.h"
#include "VorControl/Control/IControlSystemInterface.h"

#include <string>

namespace VorControl {

/// State of the system and of a scanner for any thread. A call waits at most `timeout` microseconds for the main loop
/// and then answers with the last good copy; with 0 a poller sees what its previous call asked for. On the main loop
/// itself the answer is fresh and comes at once.
class IControlDataCache {
public:
    virtual ~IControlDataCache() = default;

    virtual IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) = 0;
    /// An empty id accepts whichever scanner was asked for last. Throws yERROR_NOT_FOUND while the copy is another
    /// scanner's.
    virtual IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                                      unsigned long long timeout) = 0;
};

} // namespace VorControl
