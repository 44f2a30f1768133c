#pragma once

#include "Sensor/CommandLine.h"
#include "Sensor/Jobs/Overlay.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/SignalWatch.h"
#include "Sensor/StartReport.h"
#include "Sensor/UserLog.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/AsyncTimer.h"
#include "Vor/MainLoop.h"

#include <atomic>
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

    /// A supervisor is asked to start the program again.
    static constexpr int RestartStatus = 75;

    /// Starts the services, then the scan, and returns once SIGINT or SIGTERM has come, with 0, or a client has asked
    /// for a restart, with RestartStatus. Throws a StartError for what the user asked for and can't have.
    int Run();

    /// Once Run has created them. For the main loop's thread.
    VorControl::IControlManager& Services() { return host.Services(); }

private:
    VirtualSensor::Settings SensorSettings();
    ServiceHost::Settings HostSettings();
    void LoadPlugins();
    void ApplySettings();
    void PrepareJob();
    void LoadJob();
    /// Those that the user asked for, with the settings that the user gave.
    void EnableServices();
    void ReportStart();
    void StartScan();
    void StopScan();
    void ReportJob(const std::string& fileName);
    void RestoreFactory();
    void Restart();
    [[noreturn]] void GiveUp() const;

    const CommandLine commandLine;
    const UserLog log;
    StartReport report;
    const Scan::Recording recording;
    const std::string job;
    Jobs::Overlay overlay;
    Vor::MainLoop loop;
    std::atomic<bool> restarting{false};
    SignalWatch signals;
    VirtualSensor sensor;
    ServiceHost host;
    Vor::AsyncTimer restartTimer;
};

} // namespace Sensor
