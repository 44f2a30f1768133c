#include "Sensor/Http/FailureResponse.h"

#include "Sensor/Http/Problem.h"
#include "Sensor/Http/ProblemTypes.h"
#include "Vor/DocumentErrors.h"
#include "Vor/Exception.h"
#include "VorApi/LogThrown.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace Sensor::Http {

using VorRest::Verb;

namespace {

unsigned HttpStatusOf(yStatus code, Verb verb, const Methods& methods) {
    const bool reads = verb == Verb::Read;
    switch (code) {
    case yERROR_NOT_FOUND:
        return 404;
    case yERROR_UNIMPLEMENTED:
        if (reads) {
            return methods.AnyButGet() ? 405 : 404;
        }
        return verb == Verb::Invoke || !methods.Any() ? 404 : 405;
    case yERROR_PARAMETER:
        if (reads) {
            return methods.AnyButGet() ? 405 : 404;
        }
        return methods.Any() ? 422 : 404;
    case yERROR_READ_ONLY:
        if (reads || verb == Verb::Invoke) {
            return 403;
        }
        return methods.Any() ? 405 : 404;
    case yERROR_FORMAT:
    case yERROR_VERSION:
    case yERROR_SIZE:
    case yERROR_COMMAND:
        return 422;
    case yERROR:
        return reads ? 500 : 422;
    case yERROR_STATE:
        return reads ? 503 : 409;
    case yERROR_FULL:
    case yERROR_CONFLICT:
    case yERROR_ALREADY_EXISTS:
    case yERROR_PARTIAL:
        return 409;
    case yERROR_BUSY:
        return 503;
    case yERROR_TIMEOUT:
        return 504;
    default:
        return 500;
    }
}

/// The texts of a failure and of those nested in it, outermost first; one that is repeated, once. Adds the errors of a
/// document.
void Collect(const std::exception& failure, std::string& lastText, Problem& problem) {
    const std::string text = failure.what();
    if (!text.empty() && text != lastText) {
        problem.detail += problem.detail.empty() ? text : ": " + text;
        lastText = text;
    }
    if (const auto* const refused = dynamic_cast<const Vor::DocumentException*>(&failure)) {
        problem.errors = refused->Errors();
    }
    try {
        std::rethrow_if_nested(failure);
    } catch (const std::exception& nested) {
        Collect(nested, lastText, problem);
    } catch (...) { // NOLINT(bugprone-empty-catch): it has no text
    }
}

struct Outcome {
    unsigned status;
    std::optional<yStatus> code;
};

Outcome OutcomeOf(const std::exception& failure, Verb verb, const Methods& methods) {
    if (const auto* const known = dynamic_cast<const Vor::Exception*>(&failure)) {
        return {HttpStatusOf(known->Status(), verb, methods), known->Status()};
    }
    return {dynamic_cast<const std::out_of_range*>(&failure) != nullptr ? 404U : 500U, std::nullopt};
}

Problem ProblemOf(const std::exception& failure, Verb verb, const Methods& methods) {
    const auto [status, code] = OutcomeOf(failure, verb, methods);
    Problem problem{status, "", code};
    if (status == 500) {
        Vor::LogThrown(failure, "A request over HTTP failed.");
    } else if (code) {
        std::string lastText;
        Collect(failure, lastText, problem);
    }
    if (problem.detail.empty()) {
        problem.detail = ProblemTypeOf(status).explanation;
    }
    return problem;
}

Problem ProblemOf(const std::exception_ptr& failure, Verb verb, const Methods& methods) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& e) {
        return ProblemOf(e, verb, methods);
    } catch (...) {
        Vor::LogError("A request over HTTP failed: unknown exception");
        return {500, ProblemTypeOf(500).explanation};
    }
}

} // namespace

HttpResponse FailureResponse(const std::exception_ptr& failure, Verb verb, const Methods& methods) {
    const Problem problem = ProblemOf(failure, verb, methods);
    HttpResponse response = ProblemResponse(problem);
    if (problem.status == 405) {
        methods.AddTo(response.fields);
    }
    return response;
}

} // namespace Sensor::Http
