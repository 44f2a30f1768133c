#pragma once

#include "Sensor/Http/HttpResponse.h"

#include <string>

namespace Sensor::Http {

/// An answer that says what is wrong with a request: a problem document (RFC 9457), whose type "/problems/SLUG" answers
/// with an explanation. In the texts, bytes that aren't UTF-8 are replaced.
HttpResponse ProblemResponse(unsigned status, const std::string& slug, const std::string& title,
                             const std::string& detail);

} // namespace Sensor::Http
