#pragma once

#include "Sensor/Http/IHttpHandler.h"

namespace Sensor::Http {

/// What the copies of a responder share. It is destroyed with the last of them. From any thread.
class Responder::Target {
public:
    virtual ~Target() = default;
    virtual void Respond(HttpResponse response) = 0;
    virtual bool IsWanted() const = 0;
    virtual void Wake() = 0;
};

} // namespace Sensor::Http
