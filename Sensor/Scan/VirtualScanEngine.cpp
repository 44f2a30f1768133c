#include "Sensor/Scan/VirtualScanEngine.h"

#include "Sensor/Scan/VirtualScanner.h"

#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Sensor::Scan {

VirtualScanEngine::VirtualScanEngine(std::shared_ptr<Io::OutputDevices> given)
    : devices(std::move(given))
    , services{{&typeid(VorCommon::IProviderManager<VorCommon::IDigitalOutputProvider>), devices}} {}

std::unique_ptr<VorScan::Internal::ScanEngineInstance>
VirtualScanEngine::Make(ScannerActions::Environ environ, ScannerAlignment::Settings settings,
                        std::shared_ptr<Io::OutputDevices> devices) {
    auto scanner = std::make_unique<VirtualScanner>(std::move(environ), settings);
    ScannerAlignment& alignment = scanner->Alignment();
    auto instance = std::make_unique<VorScan::Internal::ScannerInstance>(ScannerId, std::vector<std::string>{SensorId},
                                                                         std::move(scanner));
    alignment.SetStateUpdated([&event = instance->ScannerAlignStateUpdatedEvent()] { event.Raise(); });

    auto engine = std::make_unique<VorScan::Internal::ScanEngineInstance>(
        Id, VorScan::ScanEngineInfo(Id), std::make_unique<VirtualScanEngine>(std::move(devices)));
    engine->AddScanner(std::move(instance));
    return engine;
}

} // namespace Sensor::Scan
