#pragma once

#include "Vor/AsyncTimer.h"
#include "VorControl/Control/IControlMetrics.h"

#include <map>
#include <memory>

namespace VorControl {

class IControlManager;

/// Has the enabled services refresh their figures, and reports them to those who listen. It has no lock: it is built,
/// used and destroyed on the main loop, where its timers run. Intervals are microseconds and not 0.
class ControlMetrics : public IControlMetrics {
public:
    /// Starts the refresh. Reports begin with the first handler and end with the last one.
    explicit ControlMetrics(IControlManager& manager);
    ~ControlMetrics() override;

    ControlMetrics(const ControlMetrics&) = delete;
    ControlMetrics& operator=(const ControlMetrics&) = delete;

    /// The figures as they were last refreshed. Fails for an unknown service.
    const VorCommon::IMetricsSource& LastReport(const ControlMetricsKey& key) override;
    /// Fails as LastReport does. The handler may add and remove handlers, itself too.
    ReportEvent::CallbackId AddReportHandler(std::function<void(const VorCommon::IMetricsSource&)> handler,
                                             const ControlMetricsKey& key) override;
    /// Fails with yERROR_PARAMETER for a key that nobody listens to.
    void RemoveReportHandler(ReportEvent::CallbackId id, const ControlMetricsKey& key) override;

    /// Both start their timer anew and return the former interval.
    unsigned long long ChangeUpdateInterval(unsigned long long interval);
    unsigned long long ChangeReportInterval(unsigned long long interval);
    void StopUpdateTimer();
    void StopReportTimer();

private:
    void UpdateMetrics();
    void DispatchReports();
    const VorCommon::IMetricsSource& ResolveReport(const ControlMetricsKey& key);

    IControlManager& manager;
    std::map<ControlMetricsKey, ReportEvent> reportEvents;
    std::unique_ptr<Vor::AsyncTimer> reportTimer;
    std::unique_ptr<Vor::AsyncTimer> updateTimer;
    unsigned long long reportInterval = 1000000;
    unsigned long long updateInterval = 250000;
};

} // namespace VorControl
