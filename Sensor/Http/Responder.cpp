#include "Sensor/Http/ResponderTarget.h"

#include <utility>

namespace Sensor::Http {

Responder::Responder(std::shared_ptr<Target> target)
    : target(std::move(target)) {}

void Responder::Respond(HttpResponse response) const {
    target->Respond(std::move(response));
}

bool Responder::IsWanted() const {
    return target->IsWanted();
}

void Responder::Wake() const {
    target->Wake();
}

} // namespace Sensor::Http
