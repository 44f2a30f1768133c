#pragma once

#include "Vor/Exception.h"
#include "VorControl/Control/IControlDataCache.h"
#include "yApi/yStatus.h"

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Tests {

/// A cache whose values a test sets, on any thread.
class FakeDataCache : public VorControl::IControlDataCache {
public:
    VorControl::IControlSystemInterface::SystemStats SystemStats(unsigned long long timeout) override {
        const std::lock_guard guard(mutex);
        calls.push_back("SystemStats " + std::to_string(timeout));
        return stats;
    }
    VorControl::IControlScanEngineInterface::ScannerStateInfo ScannerInfo(const std::string& scannerId,
                                                                          unsigned long long timeout) override {
        const std::lock_guard guard(mutex);
        calls.push_back("ScannerInfo " + scannerId + " " + std::to_string(timeout));
        Vor::ThrowIfFailed(scannerStatus);
        return info;
    }

    void SetStats(VorControl::IControlSystemInterface::SystemStats value) {
        const std::lock_guard guard(mutex);
        stats = std::move(value);
    }
    void SetInfo(VorControl::IControlScanEngineInterface::ScannerStateInfo value) {
        const std::lock_guard guard(mutex);
        info = std::move(value);
    }

    /// From now on each read of the scanner's state fails.
    void FailScannerInfo(yStatus status) {
        const std::lock_guard guard(mutex);
        scannerStatus = status;
    }

    std::vector<std::string> NewCalls() {
        const std::lock_guard guard(mutex);
        return std::exchange(calls, {});
    }

private:
    std::mutex mutex; ///< guards the rest
    VorControl::IControlSystemInterface::SystemStats stats;
    VorControl::IControlScanEngineInterface::ScannerStateInfo info;
    yStatus scannerStatus = yOK;
    std::vector<std::string> calls;
};

} // namespace Tests
