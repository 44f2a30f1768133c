#pragma once

#include "Sensor/Http/HttpRequest.h"
#include "Sensor/Http/HttpResponse.h"
#include "Sensor/Http/IHttpHandler.h"
#include "Sensor/Http/RequestTarget.h"

namespace Sensor::Http {

/// Opens streams of server-sent events (HTML standard, 9.2). For the main loop.
class IEventStreams {
public:
    virtual ~IEventStreams() = default;
    /// The response to a GET of the target whose client accepts "text/event-stream". The stream calls
    /// responder.Wake() when it has something to send. Throws what the resource throws, see
    /// VorRest::RequestProcessor::OpenStream.
    virtual HttpResponse Open(const RequestTarget& target, const HttpRequest& request, Responder responder) = 0;
};

} // namespace Sensor::Http
