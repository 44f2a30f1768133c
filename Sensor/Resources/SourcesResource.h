#pragma once

#include "VorApi/DocumentResourceBase.h"

namespace Sensor {
class VirtualSensor;
}

namespace Sensor::Resources {

/// The data sources of the scan.
class SourcesResource : public VorApi::DocumentResourceBase {
public:
    /// The sensor outlives this.
    explicit SourcesResource(const VirtualSensor& sensor)
        : sensor(sensor) {}

    void Document(const VorApi::RequestInfoEx& request, VorApi::ResponseInfoEx& response,
                  VorApi::VorDataTree& data) override;

private:
    const VirtualSensor& sensor;
};

} // namespace Sensor::Resources
