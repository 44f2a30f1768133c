#pragma once

namespace Vor::Properties {
class Structure;
}

namespace VorCommon {

/// Gives the figures that it keeps. On the main loop.
class IMetricsSource {
public:
    virtual const Vor::Properties::Structure& GetMetrics() const = 0;

protected:
    ~IMetricsSource() = default;
};

} // namespace VorCommon
