#include "Sensor/Http/Problem.h"

#include "Sensor/Http/ProblemTypes.h"

#include <memory>

#include <nlohmann/json.hpp>

namespace Sensor::Http {

namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson ProblemDocument(unsigned status, const std::string& slug, const std::string& title,
                            const std::string& detail) {
    return {{"type", "/problems/" + slug}, {"title", title}, {"status", status}, {"detail", detail}};
}

HttpResponse ResponseWith(const OrderedJson& document) {
    return {.status = document["status"].get<unsigned>(),
            .fields = {{"Content-Type", "application/problem+json"}},
            .body = std::make_shared<const std::string>(
                document.dump(-1, ' ', false, OrderedJson::error_handler_t::replace))};
}

} // namespace

HttpResponse ProblemResponse(unsigned status, const std::string& slug, const std::string& title,
                             const std::string& detail) {
    return ResponseWith(ProblemDocument(status, slug, title, detail));
}

HttpResponse ProblemResponse(const Problem& problem) {
    const ProblemType& type = ProblemTypeOf(problem.status);
    OrderedJson document = ProblemDocument(problem.status, type.slug, type.title, problem.detail);
    if (problem.code) {
        document["code"] = *problem.code;
    }
    for (const Vor::DocumentError& error : problem.errors) {
        document["errors"].push_back({{"pointer", error.pointer}, {"text", error.text}, {"status", error.status}});
    }
    HttpResponse response = ResponseWith(document);
    response.fields.Add("Cache-Control", "no-store");
    if (problem.status == 503) {
        response.fields.Add("Retry-After", "1");
    }
    return response;
}

} // namespace Sensor::Http
