#pragma once

#include "Sensor/Scan/ScannerActions.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "VorScan/IScanEngine.h"
#include "VorScan/Internal/ScanEngineInstance.h"

#include <memory>

namespace Sensor::Scan {

/// The scan engine of the virtual sensor. Its service registry is empty.
class VirtualScanEngine : public VorScan::IScanEngine {
public:
    static constexpr const char* Id = "virtual"; ///< also the name of its type
    static constexpr const char* ScannerId = "scanner-0";
    static constexpr const char* SensorId = "sensor-0";

    /// The engine with its one scanner, a VirtualScanner with one sensor. What `environ` refers to must outlive it.
    static std::unique_ptr<VorScan::Internal::ScanEngineInstance> Make(ScannerActions::Environ environ,
                                                                       ScannerAlignment::Settings settings);

    const ServiceRegistry& Services() const override { return services; }

private:
    const ServiceRegistry services;
};

} // namespace Sensor::Scan
