#include "Sensor/VirtualSensor.h"

#include "Sensor/DataSources.h"
#include "Sensor/Scan/VirtualScanEngine.h"
#include "VorApi/LogThrown.h"
#include "VorScan/Internal/ScanEngineInstance.h"
#include "VorScan/Internal/ScannerInstance.h"

#include <utility>

namespace Sensor {

VirtualSensor::VirtualSensor(const Scan::Recording& recording, Settings given)
    : recording(recording)
    , settings(std::move(given))
    , scanner(recording, hub, settings.scan)
    , core(CoreEnviron()) {
    for (const VorPipe::PipeOutput& output : DataSourcesOf(recording)) {
        pipe.Add(output);
    }
    scanEngines.Add(Scan::VirtualScanEngine::Make(ActionsEnviron(), settings.alignment));
}

VorScan::AlignState VirtualSensor::Alignment() {
    return scanEngines.GetInstance(Scan::VirtualScanEngine::Id)
        .FindScanner(Scan::VirtualScanEngine::ScannerId)
        .Scanner()
        .AlignmentState()
        .Get();
}

VorCore::SystemCore::Environ VirtualSensor::CoreEnviron() {
    return {.startScan = [this] { scanner.Start(); },
            .stopScan = [this] { scanner.Stop(); },
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

// The sensor is restored even if a service fails at the event.
void VirtualSensor::RestoreFactory() {
    Vor::RunLogged("A service failed at the factory restore.", [this] { factoryRestore.Raise(); });
    settings.factoryRestore();
}

} // namespace Sensor
