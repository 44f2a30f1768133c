#pragma once

#include "Sensor/Resources/SensorProperties.h"

#include <memory>

namespace VorApi {
class ResourceRouter;
}

namespace Sensor::Http {
class EventStreams;
}

namespace Sensor::Resources {

/// The resources of the sensor itself, which are routes of the router as long as this lives. Main loop only.
class SensorDir {
public:
    /// Router and streams outlive this. Fails with yERROR_ALREADY_EXISTS when the router has one of the routes. Then it
    /// has none of the others.
    SensorDir(VorApi::ResourceRouter& router, const SensorEnviron& environ, Http::EventStreams& streams);
    ~SensorDir();
    SensorDir(const SensorDir&) = delete;
    SensorDir& operator=(const SensorDir&) = delete;

private:
    struct Impl;

    const std::unique_ptr<Impl> impl;
};

} // namespace Sensor::Resources
