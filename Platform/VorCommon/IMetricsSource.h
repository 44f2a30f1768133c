#pragma once

namespace Vor::Properties {
class Structure;
}

namespace VorCommon {

/// Returns its figures. Called on the main loop.
class IMetricsSource {
public:
    virtual const Vor::Properties::Structure& GetMetrics() const = 0;

protected:
    ~IMetricsSource() = default;
};

} // namespace VorCommon
