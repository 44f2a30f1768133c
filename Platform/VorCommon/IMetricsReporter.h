#pragma once

#include "VorApi/Event.h"
#include "VorCommon/IMetricsSource.h"

#include <functional>

namespace VorCommon {

/// Returns figures by key, and reports them from time to time to those who listen. Main loop only.
template <class Key>
class IMetricsReporter {
public:
    using ReportEvent = Vor::Event<const IMetricsSource&>;

    virtual ~IMetricsReporter() = default;
    virtual const IMetricsSource& LastReport(Key key) = 0;
    virtual ReportEvent::CallbackId AddReportHandler(std::function<void(const IMetricsSource&)> handler, Key key) = 0;
    virtual void RemoveReportHandler(ReportEvent::CallbackId id, Key key) = 0;
};

} // namespace VorCommon
