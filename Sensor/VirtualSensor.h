#pragma once

#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/Scanner.h"
#include "Sensor/Scan/ScannerActions.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "VorApi/Event.h"
#include "VorCore/ResultHub.h"
#include "VorCore/SystemCore.h"
#include "VorPipe/PipeManager.h"
#include "VorScan/Internal/ScanEngineManager.h"

#include <functional>
#include <string>
#include <vector>

namespace Sensor {

/// The sensor that services drive: its scan with the data sources, its scan engine and its core. For the main loop.
class VirtualSensor {
public:
    struct Settings {
        Scan::Scanner::Settings scan = {};
        Scan::ScannerAlignment::Settings alignment = {};
        /// On these the core measures the storage.
        std::vector<std::string> storageFolders = {};
        /// Gets what the user is told, a line at a time.
        std::function<void(const std::string& line)> print = [](const std::string&) {};
        /// What a factory restore does once its event is raised.
        std::function<void()> factoryRestore = [] {};
        std::function<void()> restart = [] {};
    };

    /// The recording is borrowed. Throws a Vor::Exception as Scanner does.
    VirtualSensor(const Scan::Recording& recording, Settings settings);
    /// Stops the scan, without its event.
    ~VirtualSensor() = default;
    VirtualSensor(const VirtualSensor&) = delete;
    VirtualSensor& operator=(const VirtualSensor&) = delete;

    VorCore::ResultHub& Hub() { return hub; }
    VorCore::Core& Core() { return core; }
    /// Knows all data sources of the recording, as long as this lives.
    VorPipe::PipeManager& Pipe() { return pipe; }
    VorScan::Internal::ScanEngineManager& ScanEngines() { return scanEngines; }

    Vor::Event<>& PreStartScanEvent() { return preStartScan; }
    Vor::Event<>& PostStopScanEvent() { return postStopScan; }
    Vor::Event<>& FactoryRestoreEvent() { return factoryRestore; }

private:
    VorCore::SystemCore::Environ CoreEnviron();
    Scan::ScannerActions::Environ ActionsEnviron();
    void RestoreFactory();

    const Settings settings;
    VorCore::ResultHub hub;
    Vor::Event<> preStartScan;
    Vor::Event<> postStopScan;
    Vor::Event<> factoryRestore;
    VorPipe::PipeManager pipe;
    Scan::Scanner scanner;
    VorScan::Internal::ScanEngineManager scanEngines;
    VorCore::SystemCore core;
};

} // namespace Sensor
