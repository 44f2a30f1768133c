#pragma once

#include "Sensor/Io/OutputDevices.h"
#include "Sensor/Scan/Limits.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/Scanner.h"
#include "Sensor/Scan/ScannerActions.h"
#include "Sensor/Scan/ScannerAlignment.h"
#include "Sensor/Scan/ScannerState.h"
#include "Sensor/Scan/TriggerMode.h"
#include "VorApi/Event.h"
#include "VorCore/ResultHub.h"
#include "VorCore/SystemCore.h"
#include "VorPipe/PipeManager.h"
#include "VorScan/AlignState.h"
#include "VorScan/Internal/ScanEngineManager.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Sensor {

/// The sensor that the services control: its scan with the data sources, its scan engine and its core. For the main
/// loop's thread.
class VirtualSensor {
public:
    struct Settings {
        Scan::Scanner::Settings scan = {};
        Scan::ScannerAlignment::Settings alignment = {};
        Io::OutputDevices::Settings io = {};
        /// Whose storage the core measures.
        std::vector<std::string> storageFolders = {};
        /// Prints a line for the user.
        std::function<void(const std::string& line)> print = [](const std::string&) {};
        /// Called by a factory restore after its event.
        std::function<void()> factoryRestore = [] {};
        std::function<void()> restart = [] {};
    };

    /// `recording` must outlive this. Throws what Scanner throws.
    VirtualSensor(const Scan::Recording& recording, Settings settings);
    /// Stops the scan without raising the event.
    ~VirtualSensor() = default;
    VirtualSensor(const VirtualSensor&) = delete;
    VirtualSensor& operator=(const VirtualSensor&) = delete;

    VorCore::ResultHub& Hub() { return hub; }
    VorCore::Core& Core() { return core; }
    /// Contains all data sources of the recording.
    VorPipe::PipeManager& Pipe() { return pipe; }
    VorScan::Internal::ScanEngineManager& ScanEngines() { return scanEngines; }

    /// The devices with digital outputs. From any thread.
    Io::OutputDevices& Devices() const { return *devices; }

    const Scan::Recording& Input() const { return recording; }
    Scan::ScannerState ScanState() const { return scanner.State(); }
    /// Frames that were published since the program was started. From any thread.
    std::uint64_t FrameTotal() const { return scanner.FrameTotal(); }
    /// Frames a second, when they are made by time.
    double FrameRate() const { return settings.scan.frameRate; }
    VorScan::AlignState Alignment();
    Scan::TriggerMode TriggerMode() const { return settings.scan.trigger; }
    /// The limits of all data sources' decisions, from the next frame on; see ResultSetMaker::SetLimits. From any
    /// thread.
    void SetLimits(std::vector<Scan::Limits> limits) { scanner.SetLimits(std::move(limits)); }

    Vor::Event<>& PreStartScanEvent() { return preStartScan; }
    Vor::Event<>& PostStopScanEvent() { return postStopScan; }
    Vor::Event<>& FactoryRestoreEvent() { return factoryRestore; }

private:
    Scan::Scanner::Settings ScanSettings() const;
    VorCore::SystemCore::Environ CoreEnviron();
    Scan::ScannerActions::Environ ActionsEnviron();
    void StartScan();
    void StopScan();
    void RestoreFactory();

    const Scan::Recording& recording;
    const Settings settings;
    VorCore::ResultHub hub;
    Vor::Event<> preStartScan;
    Vor::Event<> postStopScan;
    Vor::Event<> factoryRestore;
    VorPipe::PipeManager pipe;
    const std::shared_ptr<Io::OutputDevices> devices;
    Scan::Scanner scanner;
    VorScan::Internal::ScanEngineManager scanEngines;
    VorCore::SystemCore core;
};

} // namespace Sensor
