#include "Sensor/Application.h"

#include "Sensor/Jobs/DefaultJob.h"
#include "Sensor/Jobs/DemoJobs.h"
#include "Sensor/Jobs/JobFiles.h"
#include "Sensor/Jobs/JobFormat.h"
#include "Sensor/Jobs/OverlayStore.h"
#include "Sensor/Scan/PartGenerator.h"
#include "Sensor/Scan/RecordingParser.h"
#include "Sensor/Scan/ResultSetMaker.h"
#include "Sensor/StartError.h"
#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/ArchiveFile.h"
#include "VorControl/Control/IControlInstance.h"
#include "yApi/yStatus.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

namespace Sensor {

namespace {

/// How long the program may take to end after the signal.
constexpr std::chrono::milliseconds Patience{1800};

/// How long clients can be answered and read that their restart has succeeded.
constexpr std::chrono::microseconds RestartDelay{1'000'000};

constexpr std::chrono::microseconds LogPeriod{1'000'000};

Scan::Recording ReadInput(const CommandLine& commandLine) {
    return commandLine.recording.empty() ? Scan::GeneratePart()
                                         : Scan::RecordingParser::ReadFile(commandLine.recording);
}

void RequireWholeJob(const std::string& file) {
    try {
        Jobs::JobFormat::Open(file);
    } catch (const Vor::Exception& e) {
        throw StartError(e.what());
    }
}

} // namespace

Application::Application(const CommandLine& commandLine, std::ostream& out)
    : commandLine(commandLine)
    , log({.verbose = commandLine.verbose, .file = commandLine.logFile})
    , report(out)
    , recording(ReadInput(commandLine))
    , job(StartJob())
    , signals([this] { loop.Stop(); }, Patience, [this] { GiveUp(); }, [this] { log.ReopenFile(); })
    , sensor(recording, SensorSettings())
    , host(HostSettings(), sensor)
    , retry(log, [this](VorControl::IControlInstance& instance) { report.PrintService(instance); })
    , restartTimer([this](Vor::AsyncTimer&) { signals.Trigger(); })
    , logTimer([this](Vor::AsyncTimer&) { log.ReportRepeats(); }) {
    host.JobLoadedEvent().Add([this](const std::string& fileName) { ReportJob(fileName); });
}

Application::~Application() {
    StopScan();
}

std::string Application::StartJob() const {
    if (!commandLine.job.empty()) {
        return commandLine.job;
    }
    std::string chosen = Jobs::DefaultJob::Read(commandLine.dataFolder / VorCommon::PersistManager::WorkspaceFile);
    if (!chosen.empty() && Jobs::JobFiles(commandLine.dataFolder / "jobs").Has(chosen)) {
        return chosen;
    }
    std::string demo = Jobs::DemoJobs::JobFor(recording);
    if (!chosen.empty()) {
        Vor::LogUser(Vor::UserWarning, "VorSensor",
                     "The job %1$s, with which the sensor was to start, doesn't exist any more. It starts with %2$s.",
                     chosen, demo);
    }
    return demo;
}

VirtualSensor::Settings Application::SensorSettings() {
    return {.scan = {.frameRate = commandLine.frameRate,
                     .once = commandLine.once,
                     .ended =
                         [this] {
                             loop.Post([this] { report.PrintLine("The scan stands still behind the last frame."); });
                         },
                     .trigger = commandLine.trigger},
            .alignment = commandLine.alignment,
            .io = commandLine.io,
            .storageFolders = {commandLine.dataFolder.string()},
            .print = [this](const std::string& line) { report.PrintLine(line); },
            .factoryRestore = [this] { RestoreFactory(); },
            .restart = [this] { Restart(); }};
}

ServiceHost::Settings Application::HostSettings() {
    return {.dataFolder = commandLine.dataFolder,
            .job = job,
            .decorateStore = [this](VorCommon::IPersistStore& store,
                                    VorCommon::PersistDomain) -> std::unique_ptr<VorCommon::IPersistStore> {
                return std::make_unique<Jobs::OverlayStore>(store, overlay);
            }};
}

int Application::Run() {
    report.PrintLine("vorsensor " VOR_VERSION);
    LoadPlugins();
    demoJobs.emplace(host.Plugins(), recording);
    host.CreateServices();
    if (commandLine.http.on) {
        http.emplace(commandLine.http, host, sensor, logHistory,
                     [this](const std::string& line) { report.PrintLine(line); });
    }
    ApplySettings();
    folderLock.emplace(commandLine.dataFolder, VorCommon::PersistManager::JobFileName(job));
    PrepareJob();
    LoadJob();
    EnableServices();
    RequireUsableSettings();
    ReportStart();
    StartScan();
    logTimer.Start(LogPeriod.count(), false);
    loop.Run();
    http.reset();
    StopScan();
    host.StopServices();
    report.PrintLine(restarting ? "Stopped, to be started again." : "Stopped.");
    return restarting ? RestartStatus : 0;
}

void Application::LoadPlugins() {
    for (const std::filesystem::path& folder : commandLine.pluginFolders) {
        try {
            host.LoadPlugins(folder);
        } catch (const Vor::Exception& e) {
            throw StartError((commandLine.pluginFoldersGiven ? "--plugins " + folder.string() + ": " : std::string()) +
                             e.what() + ".");
        }
    }
    for (const VorPlugin::PluginManager::Refusal& refusal : host.Plugins().Refusals()) {
        report.PrintLine("Plug-in " + refusal.path + " is refused: " + refusal.reason);
    }
    for (const std::string& sentence : host.DuplicateTypeNames()) {
        report.PrintLine(sentence);
    }
}

void Application::ApplySettings() {
    const UserLog::Silence silence(log);
    for (const Jobs::ServiceSetting& setting : commandLine.settings) {
        overlay.Add(setting, host.Services());
    }
    const std::vector<std::string> known = host.Services().List();
    for (const std::string& serviceId : commandLine.enable) {
        if (std::find(known.begin(), known.end(), serviceId) == known.end()) {
            throw StartError("--enable " + serviceId + ": unknown service.");
        }
    }
}

void Application::PrepareJob() {
    const std::string file = host.Persistence().FilePath(VorCommon::PersistDomain::Job);
    const bool exists = VorCommon::ArchiveFile(file).Exists();
    if (exists) {
        RequireWholeJob(file);
    } else if (Jobs::DemoJobs::Has(job)) {
        demoJobs->Write(job, file);
    } else {
        throw StartError("--job " + job + ": there is no file " + file + ", and only the jobs " + Jobs::DemoJobs::Demo +
                         " and " + Jobs::DemoJobs::DemoValues + " are made here.");
    }
    report.PrintLine("Data folder: " + commandLine.dataFolder.string());
    const bool made = VorCommon::ArchiveFile(file).Exists();
    report.PrintLine("Job: " + file + (exists ? "" : made ? " (just made)" : " (not saved yet, defaults)"));
}

void Application::LoadJob() {
    try {
        host.LoadDomains();
    } catch (const Vor::Exception& e) {
        throw StartError(e.what());
    }
}

void Application::EnableServices() {
    for (const std::string& serviceId : commandLine.enable) {
        VorControl::IControlInstance& instance = host.Services().GetInstance(serviceId);
        if (instance.IsEnabled()) {
            continue;
        }
        overlay.Apply(instance);
        instance.Enable(true);
    }
}

void Application::RequireUsableSettings() {
    for (const Jobs::ServiceSetting& setting : commandLine.settings) {
        const VorControl::IControlInstance& instance = host.Services().GetInstance(setting.serviceId);
        const auto failure = instance.IsEnabled() ? instance.LastEnableFailure() : std::nullopt;
        if (failure && failure->status == yERROR_PARAMETER) {
            throw StartError(SettingsOf(setting.serviceId) + ": service \"" + setting.serviceId + "\" can't start (" +
                             failure->text + ").");
        }
    }
}

std::string Application::SettingsOf(const std::string& serviceId) const {
    std::string options;
    for (const Jobs::ServiceSetting& setting : commandLine.settings) {
        if (setting.serviceId == serviceId) {
            options += (options.empty() ? "" : ", ") + setting.option;
        }
    }
    return options;
}

void Application::ReportStart() {
    report.PrintServices(host.Services());
    if (http) {
        http->Start();
    }
    report.PrintInput(commandLine.recording.empty() ? "generated part" : commandLine.recording.string(), recording,
                      SensorSettings().scan);
    report.PrintMaps(host.Services(), Scan::ResultSetMaker::DataSources(recording));
    retry.Watch(host.Services());
}

void Application::StartScan() {
    if (!commandLine.scan) {
        report.PrintLine("Not scanning.");
        return;
    }
    try {
        sensor.Core().Start(true, false);
        report.PrintLine("Scanning.");
    } catch (const std::exception& e) {
        report.PrintLine(std::string("Not scanning: ") + e.what());
    }
}

void Application::StopScan() {
    try {
        sensor.Core().Stop(false, false);
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "The scan can't be stopped.");
    }
}

void Application::ReportJob(const std::string& fileName) {
    report.PrintLine("Loaded job: " + fileName);
    folderLock->SetJob(fileName);
    report.PrintServices(host.Services());
    report.PrintMissingSources(host.Services(), Scan::ResultSetMaker::DataSources(recording));
    retry.Watch(host.Services());
}

void Application::RestoreFactory() {
    report.PrintLine(
        "Factory restore: both domains are initialised and a fresh demo job is loaded. Clients may have to "
        "connect again.");
    host.Persistence().Restore(
        Jobs::DemoJobs::Demo, [this](VorCommon::IPersistStore& store) { demoJobs->Fill(Jobs::DemoJobs::Demo, store); });
}

void Application::Restart() {
    report.PrintLine("Restart: the program ends with status " + std::to_string(RestartStatus) + ".");
    restarting = true;
    restartTimer.Start(RestartDelay.count(), true);
}

void Application::GiveUp() const {
    std::cerr << "vorsensor: a service doesn't stop; ended without it." << std::endl;
    std::_Exit(restarting ? RestartStatus : 0);
}

} // namespace Sensor
