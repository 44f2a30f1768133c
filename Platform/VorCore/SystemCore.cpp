#include "VorCore/SystemCore.h"

#include "VorApi/LogThrown.h"

#include <chrono>
#include <utility>

namespace VorCore {

namespace {

/// Microseconds since the beginning of 1970.
unsigned long long MachineTime() {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(std::chrono::duration_cast<std::chrono::microseconds>(time).count());
}

} // namespace

SystemCore::SystemCore(Environ environ)
    : environ(std::move(environ))
    , reader(this->environ.storageFolders) {}

void SystemCore::Start(bool, bool) {
    if (scanning) {
        return;
    }
    try {
        if (environ.preStartScan != nullptr) {
            environ.preStartScan->Raise();
        }
        environ.startScan();
    } catch (...) {
        RaisePostStopAndLogFailure();
        throw;
    }
    scanning = true;
}

void SystemCore::Stop(bool, bool) {
    if (!scanning) {
        return;
    }
    environ.stopScan();
    scanning = false;
    RaisePostStop();
}

void SystemCore::RaisePostStop() {
    if (environ.postStopScan != nullptr) {
        environ.postStopScan->Raise();
    }
}

void SystemCore::RaisePostStopAndLogFailure() {
    try {
        RaisePostStop();
    } catch (const std::exception& e) {
        Vor::LogThrown(e, "Reporting that the scan hasn't started failed.");
    }
}

void SystemCore::SetIpAddress(const std::vector<yIpConfig>& configs, bool) {
    const std::lock_guard guard(mutex);
    nextIpConfigs = configs;
}

std::vector<yIpConfig> SystemCore::NextIpConfigs() const {
    const std::lock_guard guard(mutex);
    return nextIpConfigs;
}

long long SystemCore::LocalNodeDateTime() const {
    const std::lock_guard guard(mutex);
    return static_cast<long long>(MachineTime() + clockOffset);
}

void SystemCore::SetLocalNodeDateTime(long long value) {
    const std::lock_guard guard(mutex);
    clockOffset = static_cast<unsigned long long>(value) - MachineTime();
}

std::string SystemCore::LocalNodeNtpHost() const {
    const std::lock_guard guard(mutex);
    return ntpHost;
}

void SystemCore::SetLocalNodeNtpHost(const std::string& host, bool) {
    const std::lock_guard guard(mutex);
    ntpHost = host;
}

bool SystemCore::LocalNodeSyncTime(const std::string& host) {
    if (host.empty()) {
        return false;
    }
    const std::lock_guard guard(mutex);
    clockOffset = 0;
    return true;
}

const Vor::Properties::Structure& SystemCore::GetMetricsReporter() {
    const std::lock_guard guard(mutex);
    reader.Read(metrics);
    return metrics;
}

} // namespace VorCore
