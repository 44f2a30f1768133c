#pragma once

#include "Sensor/Http/HttpResponse.h"
#include "Sensor/Http/ResourceMap.h"
#include "VorRest/Request.h"

#include <exception>

namespace Sensor::Http {

/// The answer to a request that has failed. `methods`: those at its path, none when the path names nothing. What the
/// client can neither see nor change is logged, and not answered.
HttpResponse FailureResponse(const std::exception_ptr& failure, VorRest::Verb verb, const Methods& methods);

} // namespace Sensor::Http
