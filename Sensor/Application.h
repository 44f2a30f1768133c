#pragma once

#include "Sensor/CommandLine.h"
#include "Sensor/Jobs/Overlay.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/Scan/Scanner.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/SignalWatch.h"
#include "Sensor/StartReport.h"
#include "Sensor/UserLog.h"
#include "Vor/MainLoop.h"

#include <memory>
#include <ostream>
#include <string>

namespace Sensor {

/// The virtual sensor. For one thread, which becomes the main loop's and mustn't have made others.
class Application {
public:
    /// Reads the input. Throws a StartError. `out` gets what the user is told and must outlive this.
    Application(const CommandLine& commandLine, std::ostream& out);
    /// Stops the scan, then the services.
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Starts the services, then the scan, and returns once SIGINT or SIGTERM has come. Throws a StartError for what
    /// the user asked for and can't have.
    void Run();

private:
    ServiceHost::Settings HostSettings();
    void LoadPlugins();
    void TakeSettings();
    void PrepareJob();
    void LoadJob();
    void Report();
    void StartScan();
    void StopScan();

    const CommandLine commandLine;
    const UserLog log;
    StartReport report;
    const Scan::Recording recording;
    const std::string job;
    Jobs::Overlay overlay;
    Vor::MainLoop loop;
    SignalWatch signals;
    ServiceHost host;
    std::unique_ptr<Scan::Scanner> scanner;
};

} // namespace Sensor
