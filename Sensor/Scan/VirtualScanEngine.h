#pragma once

#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Scan/ScannerActions.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "VorScan/IScanEngine.h"
#include "VorScan/Internal/ScanEngineInstance.h"

#include <memory>

namespace Sensor::Scan {

/// The scan engine of the virtual sensor. It offers devices with digital outputs.
class VirtualScanEngine : public VorScan::IScanEngine {
public:
    static constexpr const char* Id = "virtual"; ///< also the name of its type
    static constexpr const char* ScannerId = "scanner-0";
    static constexpr const char* SensorId = "sensor-0";

    /// The engine with its one scanner, a VirtualScanner with one sensor. What `environ` refers to must outlive it.
    static std::unique_ptr<VorScan::Internal::ScanEngineInstance> Make(ScannerActions::Environ environ,
                                                                       ScannerAlignment::Settings settings,
                                                                       std::shared_ptr<Io::OutputDevices> devices);

    explicit VirtualScanEngine(std::shared_ptr<Io::OutputDevices> devices);

    const ServiceRegistry& Services() const override { return services; }

private:
    /// As the interface under which they are found.
    const std::shared_ptr<VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>> devices;
    const ServiceRegistry services;
};

} // namespace Sensor::Scan
