#pragma once

#include "Sensor/CommandLine.h"
#include "Sensor/FolderLock.h"
#include "Sensor/Jobs/DemoJobs.h"
#include "Sensor/Jobs/Overlay.h"
#include "Sensor/LogHistory.h"
#include "Sensor/ResourceServer.h"
#include "Sensor/Scan/Recording.h"
#include "Sensor/ServiceHost.h"
#include "Sensor/SignalWatch.h"
#include "Sensor/StartReport.h"
#include "Sensor/StartRetry.h"
#include "Sensor/UserLog.h"
#include "Sensor/VirtualSensor.h"
#include "Vor/AsyncTimer.h"
#include "Vor/MainLoop.h"

#include <atomic>
#include <optional>
#include <ostream>
#include <string>

namespace Sensor {

/// The virtual sensor. For one thread, which becomes the main loop's. It must be the program's only thread so far.
class Application {
public:
    /// Reads the input. Throws a StartError. Messages for the user are printed to `out`, which must outlive this.
    Application(const CommandLine& commandLine, std::ostream& out);
    /// Stops the scan, then the services.
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// The exit status that asks a supervisor to start the program again.
    static constexpr int RestartStatus = 75;

    /// Starts the services, then the scan. Returns 0 after SIGINT or SIGTERM, and RestartStatus after a client's
    /// restart command. Throws a StartError when something that the user requested can't be done.
    int Run();

    /// For the main loop's thread, after Run has created them.
    VorControl::IControlManager& Services() { return host.Services(); }

private:
    VirtualSensor::Settings SensorSettings();
    ServiceHost::Settings HostSettings();
    void LoadPlugins();
    void ApplySettings();
    /// Makes the job's file when it is a demo job that doesn't exist yet. Throws a StartError for another job that
    /// doesn't exist, and for one that is damaged.
    void PrepareJob();
    void LoadJob();
    /// Enables the services of the command line, with its settings.
    void EnableServices();
    /// Throws a StartError when a service doesn't start with its settings of the command line.
    void RequireUsableSettings();
    /// All settings of the service on the command line, as the user wrote them.
    std::string SettingsOf(const std::string& serviceId) const;
    void ReportStart();
    void StartScan();
    void StopScan();
    void ReportJob(const std::string& fileName);
    /// The job with which to start.
    std::string StartJob() const;
    void RestoreFactory();
    void Restart();
    [[noreturn]] void GiveUp() const;

    const CommandLine commandLine;
    UserLog log;
    LogHistory logHistory;
    StartReport report;
    const Scan::Recording recording;
    const std::string job;
    Jobs::Overlay overlay;
    std::optional<FolderLock> folderLock; ///< from Run on
    Vor::MainLoop loop;
    std::atomic<bool> restarting{false};
    SignalWatch signals;
    VirtualSensor sensor;
    ServiceHost host;
    std::optional<ResourceServer> http;     ///< from the creation of the services to the end of Run, unless it is off
    std::optional<Jobs::DemoJobs> demoJobs; ///< from the load of the plug-ins on
    StartRetry retry;
    Vor::AsyncTimer restartTimer;
    Vor::AsyncTimer logTimer;
};

} // namespace Sensor
