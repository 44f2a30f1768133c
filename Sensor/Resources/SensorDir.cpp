#include "Sensor/Resources/SensorDir.h"

#include "Sensor/Resources/EntryResource.h"
#include "Sensor/Resources/EventsResource.h"
#include "Sensor/Resources/HealthResource.h"
#include "Sensor/Resources/SensorResource.h"
#include "VorApi/RoutedResource.h"

namespace Sensor::Resources {

struct SensorDir::Impl {
    Impl(VorApi::ResourceRouter& router, const SensorEnviron& environ, Http::EventStreams& streams)
        : entry(router, "/", router, environ.boot)
        , sensor(router, "/sensor", environ)
        , events(router, "/events/:stream", streams)
        , health(router, "/healthz") {}

    VorApi::RoutedResource<EntryResource> entry;
    VorApi::RoutedResource<SensorResource> sensor;
    VorApi::RoutedResource<EventsResource> events;
    VorApi::RoutedResource<HealthResource> health;
};

SensorDir::SensorDir(VorApi::ResourceRouter& router, const SensorEnviron& environ, Http::EventStreams& streams)
    : impl(std::make_unique<Impl>(router, environ, streams)) {}

SensorDir::~SensorDir() = default;

} // namespace Sensor::Resources
