#pragma once

#include "Sensor/Http/HttpResponse.h"

#include <ctime>
#include <string>

namespace Sensor::Http {

/// How a response is sent.
struct ResponseFraming {
    bool isHttp11 = true; ///< the version of the request
    bool closes = false;  ///< whether the connection is closed after it
};

/// A time as the field Date has it (RFC 9110, 5.6.7), such as "Sun, 06 Nov 1994 08:49:37 GMT".
std::string HttpDate(std::time_t time);

/// Appends status line, fields and empty line of a response. To the response's own fields it adds Date, Content-Length
/// where there is a body, Transfer-Encoding where there is a stream for a client of HTTP/1.1, and Connection. A control
/// character in a value becomes a space.
void AppendHead(std::string& out, const HttpResponse& response, const ResponseFraming& framing);

} // namespace Sensor::Http
