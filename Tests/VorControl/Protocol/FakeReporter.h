#pragma once

#include "Tests/Support/Figures.h"
#include "Vor/Exception.h"
#include "VorControl/Control/IControlMetrics.h"
#include "yApi/yStatus.h"

#include <functional>
#include <set>
#include <utility>

namespace Tests {

struct FigureSource : VorCommon::IMetricsSource {
    const Vor::Properties::Structure& GetMetrics() const override {
        if (fails) {
            Vor::Throw(yERROR_STATE, "gone");
        }
        return figures;
    }

    Figures figures;
    bool fails = false;
};

/// Has figures of "full", and of what else a test adds. Reports when a test raises its event.
class FakeReporter : public VorControl::IControlMetrics {
public:
    const VorCommon::IMetricsSource& LastReport(const VorControl::ControlMetricsKey& key) override {
        if (!keys.contains(key)) {
            Vor::Throw(yERROR_NOT_FOUND, "unknown");
        }
        return source;
    }
    ReportEvent::CallbackId AddReportHandler(std::function<void(const VorCommon::IMetricsSource&)> handler,
                                             const VorControl::ControlMetricsKey& key) override {
        LastReport(key);
        return event.Add(std::move(handler));
    }
    void RemoveReportHandler(ReportEvent::CallbackId id, const VorControl::ControlMetricsKey& /*key*/) override {
        if (removalFails) {
            Vor::Throw(yERROR_PARAMETER);
        }
        event.Remove(id);
    }

    std::set<VorControl::ControlMetricsKey> keys{VorControl::ControlMetricsKey("full")};
    FigureSource source;
    ReportEvent event;
    bool removalFails = false;
};

} // namespace Tests
