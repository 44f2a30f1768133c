#include "VorControl/Control/ControlMetrics.h"

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorApi/LogThrown.h"
#include "VorCommon/IMetricsKeeper.h"
#include "VorControl/Control/IControlDeviceManager.h"
#include "VorControl/Control/IControlInstance.h"
#include "VorControl/Control/IControlManager.h"
#include "yApi/yStatus.h"

#include <exception>
#include <utility>
#include <vector>

namespace VorControl {

using VorCommon::IMetricsSource;

ControlMetrics::ControlMetrics(IControlManager& manager)
    : manager(manager)
    , reportTimer(std::make_unique<Vor::AsyncTimer>([this](Vor::AsyncTimer&) { DispatchReports(); }))
    , updateTimer(std::make_unique<Vor::AsyncTimer>([this](Vor::AsyncTimer&) { UpdateMetrics(); })) {
    updateTimer->Start(updateInterval, false);
}

ControlMetrics::~ControlMetrics() {
    Vor::CleanUp([this] { reportTimer->Stop(); });
    reportTimer.reset();
    updateTimer.reset();
}

const IMetricsSource& ControlMetrics::LastReport(const ControlMetricsKey& key) {
    return ResolveReport(key);
}

ControlMetrics::ReportEvent::CallbackId
ControlMetrics::AddReportHandler(std::function<void(const IMetricsSource&)> handler, const ControlMetricsKey& key) {
    const auto found = reportEvents.find(key);
    if (found != reportEvents.end()) {
        return found->second.Add(std::move(handler));
    }
    LastReport(key);
    if (reportEvents.empty()) {
        reportTimer->Start(reportInterval, false);
        Vor::LogDebug("Control metrics reporting started.");
    }
    return reportEvents[key].Add(std::move(handler));
}

void ControlMetrics::RemoveReportHandler(ReportEvent::CallbackId id, const ControlMetricsKey& key) {
    const auto found = reportEvents.find(key);
    if (found == reportEvents.end()) {
        Vor::Throw(yERROR_PARAMETER);
    }
    found->second.Remove(id);
    if (found->second.Count() == 0) {
        reportEvents.erase(found);
    }
    if (reportEvents.empty()) {
        reportTimer->Stop();
        Vor::LogDebug("Control metrics reporting stopped.");
    }
}

unsigned long long ControlMetrics::ChangeUpdateInterval(unsigned long long interval) {
    updateTimer->Start(interval, false);
    return std::exchange(updateInterval, interval);
}

unsigned long long ControlMetrics::ChangeReportInterval(unsigned long long interval) {
    reportTimer->Start(interval, false);
    return std::exchange(reportInterval, interval);
}

void ControlMetrics::StopUpdateTimer() {
    updateTimer->Stop();
}

void ControlMetrics::StopReportTimer() {
    reportTimer->Stop();
}

// A service that fails doesn't keep the others from being refreshed. The first failure is thrown at the end.
void ControlMetrics::UpdateMetrics() {
    std::exception_ptr first;
    for (const std::string& id : manager.List()) {
        try {
            IControlInstance& instance = manager.GetInstance(id);
            if (!instance.IsEnabled()) {
                continue;
            }
            if (instance.HasDeviceManager()) {
                instance.DeviceManager().UpdateDevicePortMetrics();
            } else {
                instance.MetricsKeeper().UpdateMetrics();
            }
        } catch (...) {
            first = first == nullptr ? std::current_exception() : first;
        }
    }
    if (first != nullptr) {
        std::rethrow_exception(first);
    }
}

const IMetricsSource& ControlMetrics::ResolveReport(const ControlMetricsKey& key) {
    IControlInstance& instance = manager.GetInstance(key.ProtocolName());
    const bool isPort = !key.DeviceId().empty() || !key.PortId().empty();
    if (isPort && instance.HasDeviceManager()) {
        return instance.DeviceManager().DevicePortMetricsSource(key.DeviceId(), key.PortId());
    }
    return instance.MetricsSource();
}

// A handler may remove this key or another one, so the walk is over a copy of the keys. Figures that can't be read, as
// those of a port that has gone, keep no others from being reported. The first failure is thrown at the end.
void ControlMetrics::DispatchReports() {
    std::vector<ControlMetricsKey> keys;
    keys.reserve(reportEvents.size());
    for (const auto& entry : reportEvents) {
        keys.push_back(entry.first);
    }
    const auto dispatch = [this](const ControlMetricsKey& key) {
        const auto found = reportEvents.find(key);
        if (found == reportEvents.end()) {
            return;
        }
        const IMetricsSource& source = LastReport(key);
        try {
            found->second.Raise(source);
        } catch (const Vor::Exception& e) {
            Vor::LogThrown(e, "Dispatching metrics exception for metrics source %s", key.ProtocolName());
        }
    };
    std::exception_ptr first;
    for (const ControlMetricsKey& key : keys) {
        try {
            dispatch(key);
        } catch (...) {
            first = first == nullptr ? std::current_exception() : first;
        }
    }
    if (first != nullptr) {
        std::rethrow_exception(first);
    }
}

} // namespace VorControl
