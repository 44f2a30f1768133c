#include "Sensor/Http/Problem.h"

#include <nlohmann/json.hpp>

namespace Sensor::Http {

HttpResponse ProblemResponse(unsigned status, const std::string& slug, const std::string& title,
                             const std::string& detail) {
    using Json = nlohmann::ordered_json;
    const Json document{{"type", "/problems/" + slug}, {"title", title}, {"status", status}, {"detail", detail}};
    return {.status = status,
            .fields = {{"Content-Type", "application/problem+json"}},
            .body = std::make_shared<const std::string>(document.dump(-1, ' ', false, Json::error_handler_t::replace))};
}

} // namespace Sensor::Http
