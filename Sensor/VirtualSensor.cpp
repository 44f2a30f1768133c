#include "Sensor/VirtualSensor.h"

#include "Sensor/DataSources.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "Sensor/Scan/VirtualScanEngine.h"
#include "VorApi/LogThrown.h"
#include "VorScan/Internal/ScanEngineInstance.h"
#include "VorScan/Internal/ScannerInstance.h"

#include <cstdint>
#include <utility>

namespace Sensor {

VirtualSensor::VirtualSensor(const Scan::Recording& recording, Settings given)
    : recording(recording)
    , settings(std::move(given))
    , devices(std::make_shared<Io::OutputDevices>(Scan::VirtualScanEngine::Id, settings.io))
    , scanner(recording, hub, ScanSettings())
    , core(CoreEnviron()) {
    for (const VorPipe::PipeOutput& output : DataSourcesOf(recording)) {
        pipe.Add(output);
    }
    scanEngines.Add(Scan::VirtualScanEngine::Make(ActionsEnviron(), settings.alignment, devices));
}

VorScan::AlignState VirtualSensor::Alignment() {
    return scanEngines.GetInstance(Scan::VirtualScanEngine::Id)
        .FindScanner(Scan::VirtualScanEngine::ScannerId)
        .Scanner()
        .AlignmentState()
        .Get();
}

Scan::Scanner::Settings VirtualSensor::ScanSettings() const {
    Scan::Scanner::Settings scan = settings.scan;
    scan.frameMade = [this](std::uint64_t index) {
        devices->OnFrame(index, static_cast<std::int64_t>(index) * Scan::ResultSetMaker::EncoderTicksPerFrame);
    };
    return scan;
}

VorCore::SystemCore::Environ VirtualSensor::CoreEnviron() {
    return {.startScan = [this] { StartScan(); },
            .stopScan = [this] { StopScan(); },
            .factoryRestore = [this] { RestoreFactory(); },
            .restart = [this] { settings.restart(); },
            .blinkLed = [this] { settings.print("System LED blinks."); },
            .preStartScan = &preStartScan,
            .postStopScan = &postStopScan,
            .storageFolders = settings.storageFolders};
}

Scan::ScannerActions::Environ VirtualSensor::ActionsEnviron() {
    return {.trigger = [this] { scanner.Trigger(); },
            .blinkLed =
                [this](bool blinks, bool on) {
                    settings.print(blinks ? "LED blinks." : on ? "LED on." : "LED off.");
                },
            .state = [this] { return scanner.State(); }};
}

// The clock of the devices runs when the first frame is made.
void VirtualSensor::StartScan() {
    devices->OnScanStarted();
    try {
        scanner.Start();
    } catch (...) {
        devices->OnScanStopped();
        throw;
    }
}

void VirtualSensor::StopScan() {
    scanner.Stop();
    devices->OnScanStopped();
}

// The sensor is restored even if a service fails at the event.
void VirtualSensor::RestoreFactory() {
    Vor::RunLogged("A service failed at the factory restore.", [this] { factoryRestore.Raise(); });
    settings.factoryRestore();
}

} // namespace Sensor
