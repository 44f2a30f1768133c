#pragma once

namespace VorCommon {

/// Keeps figures that are refreshed from time to time, on the main loop.
class IMetricsKeeper {
public:
    virtual ~IMetricsKeeper() = default;
    virtual void UpdateMetrics() = 0;
    virtual void ResetMetrics() = 0;
};

} // namespace VorCommon
