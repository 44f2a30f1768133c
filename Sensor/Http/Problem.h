#pragma once

#include "Sensor/Http/HttpResponse.h"
#include "Vor/DocumentErrors.h"
#include "yApi/yStatus.h"

#include <optional>
#include <string>
#include <vector>

namespace Sensor::Http {

/// An answer that says what is wrong with a request: a problem document (RFC 9457), whose type "/problems/SLUG" answers
/// with an explanation. In the texts, bytes that aren't UTF-8 are replaced.
HttpResponse ProblemResponse(unsigned status, const std::string& slug, const std::string& title,
                             const std::string& detail);

/// What is wrong with a request for a resource.
struct Problem {
    unsigned status; ///< one of ProblemTypes()
    std::string detail;
    std::optional<yStatus> code = std::nullopt;  ///< the status of what has failed
    std::vector<Vor::DocumentError> errors = {}; ///< of a document that is refused
};

/// The answer of a problem, with its type's slug and title. A client that gets 503 is asked to try again.
HttpResponse ProblemResponse(const Problem& problem);

} // namespace Sensor::Http
